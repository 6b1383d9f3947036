#include "scriptFramework/job/nxAlgoScriptValidator.h"

#include "scriptFramework/job/nxAlgoJobObject.h"

nxAlgoScriptValidator::nxAlgoScriptValidator()
    : _job(std::make_shared<std::unique_ptr<nxAlgoJobObject>>(std::make_unique<nxAlgoJobObject>(this)))
{
}

nxAlgoScriptValidator::~nxAlgoScriptValidator()
{
    _DeleteJob();
}

void nxAlgoScriptValidator::_DeleteJob()
{
    _job->reset();
}

bool nxAlgoScriptValidator::CheckScript(const std::string& text)
{
    return _GetJob() != nullptr && _GetJob()->LoadScript(text).IsSuccess();
}

bool nxAlgoScriptValidator::Run()
{
    return _GetJob() != nullptr && _GetJob()->StartJob().IsSuccess();
}
