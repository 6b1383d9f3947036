#pragma once

#include <string>
#include <vector>

// One setting of a plan of many runs, as a file or an option of the command line gives it.
struct nxPlanEntry
{
    std::string key;                  // one of nxPlan::GetKeys
    std::string name;                 // of parameters and options: of which one
    std::vector<std::string> values;  // one text, unless it is a list
    bool isList = false;
    std::string place;  // for messages: "plan.toml:3:8", "--vary fast=5:50:5"
};
