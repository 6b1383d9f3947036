#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// What an editor asks to be run, in the arguments of its launch request.
struct nxLaunch
{
    std::vector<std::string> arguments;  // as on the command line of a run
    std::string folder;                  // to work in; empty: where the program was started
    bool stopsOnEntry = false;
    bool stopsAtEnd = false;
    bool isPlain = false;                             // a run that stops nowhere
    nlohmann::json events = nlohmann::json::array();  // break points at events

    // Throws std::runtime_error with what is wrong.
    static nxLaunch Read(const nlohmann::json& arguments);
};
