#pragma once

#include <memory>
#include <string>

#include "scriptFramework/job/nxPartialJobInterface.h"

class nxAlgoJobObject;

// A host without a market, for trying a script: does it compile, and does its OnInit run, as far as its first
// use of market data? A host derives from it and supplies what nxPartialJobInterface leaves open, or takes
// nxQuietAnswers for that, and overrides more to carry a script further. For one thread.
//
// First CheckScript, then Run. Why they failed is told by the log, and by GetErrorText of the job.
class nxAlgoScriptValidator : public nxPartialJobInterface
{
public:
    nxAlgoScriptValidator();
    // Copies share the job, which calls the first validator, and goes with whichever of them is destroyed
    // first: the others answer false from then on. Keep to one object.
    nxAlgoScriptValidator(const nxAlgoScriptValidator&) = default;
    nxAlgoScriptValidator& operator=(const nxAlgoScriptValidator&) = default;
    ~nxAlgoScriptValidator() override;

    // Loads the text and runs its main chunk, with the whole standard library. A second text is loaded into
    // the same Lua state, on top of the first.
    [[nodiscard]] bool CheckScript(const std::string& text);
    // Starts the job: OnInit, inside the sandbox. False too when nothing has been loaded.
    [[nodiscard]] bool Run();

protected:
    // The job, for its error text, memory limit and script helper; null once it has been deleted.
    nxAlgoJobObject* _GetJob() const { return _job->get(); }
    // Closes the script ahead of the destructor. A derived class calls it in its own: finalizers of a script
    // may call the host, which by the time of the base's destructor has lost its answers.
    void _DeleteJob();

private:
    // Held twice: the copies share the place, and one of them empties it for all.
    std::shared_ptr<std::unique_ptr<nxAlgoJobObject>> _job;
};
