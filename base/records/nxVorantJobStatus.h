#pragma once

#include <string>

#include "base/enums/nxLogLevelEnum.h"
#include "base/records/nxObject.h"
#include "base/time/nxDateTime.h"

// The status of a job as another one watches it. The output parameters are one flat text of `name=value`
// pairs.
class nxVorantJobStatus : public nxObject
{
public:
    nxVorantJobStatus* CopyInstance() const override { return new nxVorantJobStatus(*this); }

    unsigned int GetJobID() const { return _jobID; }
    const std::string& GetJobName() const { return _jobName; }
    unsigned int GetUserID() const { return _userID; }
    unsigned int GetAccountID() const { return _accountID; }
    unsigned int GetParentJobID() const { return _parentJobID; }
    const unsigned int& GetTransactionCount() const { return _transactionCount; }
    const std::string& GetUserStateText() const { return _userStateText; }
    const nxLogLevelEnum& GetUserStateLevel() const { return _userStateLevel; }
    const std::string& GetUserText1() const { return _userText1; }
    const std::string& GetUserText2() const { return _userText2; }
    const std::string& GetUserText3() const { return _userText3; }
    const std::string& GetOutputParameters() const { return _outputParameters; }
    const nxDateTime& GetUpdateTime() const { return _updateTime; }
    const std::string& GetScriptName() const { return _scriptName; }
    const std::string& GetErrorText() const { return _errorText; }

    void SetJobID(unsigned int value) { _jobID = value; }
    void SetJobName(const std::string& value) { _jobName = value; }
    void SetUserID(unsigned int value) { _userID = value; }
    void SetAccountID(unsigned int value) { _accountID = value; }
    void SetParentJobID(unsigned int value) { _parentJobID = value; }
    void SetTransactionCount(unsigned int value) { _transactionCount = value; }
    void SetUserStateText(const std::string& value) { _userStateText = value; }
    void SetUserStateLevel(const nxLogLevelEnum& value) { _userStateLevel = value; }
    void SetUserText1(const std::string& value) { _userText1 = value; }
    void SetUserText2(const std::string& value) { _userText2 = value; }
    void SetUserText3(const std::string& value) { _userText3 = value; }
    void SetOutputParameters(const std::string& value) { _outputParameters = value; }
    void SetUpdateTime(const nxDateTime& value) { _updateTime = value; }
    void SetScriptName(const std::string& value) { _scriptName = value; }
    void SetErrorText(const std::string& value) { _errorText = value; }

private:
    unsigned int _jobID = 0;
    std::string _jobName;
    unsigned int _userID = 0;
    unsigned int _accountID = 0;
    unsigned int _parentJobID = 0;
    unsigned int _transactionCount = 0;
    std::string _userStateText;
    nxLogLevelEnum _userStateLevel;
    std::string _userText1;
    std::string _userText2;
    std::string _userText3;
    std::string _outputParameters;
    nxDateTime _updateTime;
    std::string _scriptName;
    std::string _errorText;
};
