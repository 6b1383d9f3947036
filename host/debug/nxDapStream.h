#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

// The messages of the debug adapter protocol between an editor and this program: JSON texts, each with a
// header that tells its length. Whoever is at the other end may send anything. One thread.
class nxDapStream
{
public:
    using Json = nlohmann::json;

    // Both stay the caller's, and may be the same.
    nxDapStream(int input, int output) : _input(input), _output(output) {}

    int GetInput() const { return _input; }
    // There is something to read: takes what there is.
    void Read();
    // A whole message that has come in; none: there is none yet, or never. One whose text is no JSON object
    // is discarded, which is a value of its own.
    std::optional<Json> Next();
    // The other end has gone, or what it sends cannot be told apart any more, which GetFailure explains.
    bool IsOver() const { return _isOver; }
    const std::string& GetFailure() const { return _failure; }
    // Waits until the other end takes it.
    void Send(Json message);

private:
    bool _ReadHeader();
    void _Fail(const std::string& failure);

    const int _input, _output;
    std::string _text;                   // that has come in
    std::optional<std::size_t> _length;  // of the message whose header has been read
    bool _isOver = false;
    std::string _failure;
    unsigned long long _sent = 0;
};
