#pragma once

#include <functional>
#include <string>

#include "scriptFramework/job/nxAlgoJobObject.h"
#include "tests/support/nxRecordingHost.h"
#include "tests/support/nxTestProduct.h"

// A Lua text that defines evaluate(code): it runs code, an expression list or statements, and gives the text
// of its values, strings in quotes and tables, functions and userdata by their type; or "error: " and the
// message.
const std::string& nxEvaluatorText();

// A started job over a recording host, and a way to ask what a script sees. A test is a table of Lua snippets
// and what they come to. Whatever object an event brings is the snippets' global `it`. One that ends with its
// event is brought again for each snippet.
class nxScriptJob
{
public:
    nxScriptJob();

    nxRecordingHost host;
    nxAlgoJobObject job{&host};

    nxTestProduct& AddProduct(const std::string& name, unsigned int id);
    // Brings an event, and is false when the entry fails. The object is needed until the last Evaluate.
    template <class Object>
    bool Bring(nxErrorEnum (nxAlgoJobObject::*entry)(Object&), Object& object)
    {
        _event = [this, entry, &object] { return (job.*entry)(object).IsSuccess(); };
        return _event();
    }
    // As evaluate above, run inside OnTimer or the event; "failed: " and the last error when the entry fails.
    std::string Evaluate(const std::string& code);
    // The same, and after " || " the calls that the host heard, and after that the lines that were logged.
    std::string Tell(const std::string& code);
    // Evaluates the rows of the running test, see nxExpectRows; the file is one below tests/data/scripts.
    void ExpectRows(const std::string& file, const std::string& part = {});

private:
    std::function<bool()> _event;
};
