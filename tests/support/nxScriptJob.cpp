#include "tests/support/nxScriptJob.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxTestJob.h"

const std::string& nxEvaluatorText()
{
    // Everything it uses is kept in locals: a snippet may spoil the globals.
    static const std::string text = R"lua(
local compile, call, type, tostring, select, concat = loadstring, pcall, type, tostring, select, table.concat
local function show(value)
  local kind = type(value)
  if kind == "string" then return "'" .. value .. "'" end
  if kind == "number" or kind == "boolean" or kind == "nil" then return tostring(value) end
  return kind
end
local function pack(...)
  local texts = {}
  for i = 1, select("#", ...) do texts[i] = show((select(i, ...))) end
  return concat(texts, " ")
end
local gsub = string.gsub
local function finish(succeeded, ...)
  if succeeded then return pack(...) end
  local message = ...
  if type(message) ~= "string" then return "error: " .. show(message) end
  return "error: " .. (gsub(message, "^row:%d+: ", ""))
end
function evaluate(code)
  local chunk = compile("local pack = ... ; return pack(" .. code .. "\n)", "=row")
  if chunk then
    local succeeded, text = call(chunk, pack)
    if succeeded then return text end
    return finish(false, text)
  end
  local problem
  chunk, problem = compile(code, "=row")
  if not chunk then return "not Lua: " .. problem end
  return finish(call(chunk))
end
)lua";
    return text;
}

nxScriptProfile nxGetTestedProfile()
{
    const char* const profile = std::getenv("NX_TEST_PROFILE");
    return profile != nullptr && std::string_view(profile) == "strict" ? nxScriptProfile::Strict
                                                                       : nxScriptProfile::Base;
}

nxScriptJob::nxScriptJob()
{
    // The evaluator compiles, which a script of the strict profile cannot; the profile leaves this global.
    EXPECT_TRUE(job.LoadScript(nxEvaluatorText() + "_VERSION = evaluate").IsSuccess());
    job.SetProfile(nxGetTestedProfile());
    const std::string script = R"lua(
local evaluate, keep, pending = _VERSION, {}, nil
_VERSION = "Lua 5.1"
function OnInit() keep.job = job; keep.log = job.logText end
function OnTimer(code) keep.log(keep.job, evaluate(code)) end
function OnParameter(_, code) pending = code end
local function take(object)
  it = object
  if pending then
    local code = pending
    pending = nil
    keep.log(keep.job, evaluate(code))
  end
end
OnPrice, OnMarketDepth, OnProductState, OnPosition, OnPriceTradeVolumes = take, take, take, take, take
OnVorantJobUpdate, OnOrderNew, OnOrderFill, OnTickData, OnTradeWindowEvent = take, take, take, take, take
)lua";
    host.windowJob = &job;
    EXPECT_TRUE(job.LoadScript(script).IsSuccess()) << job.GetErrorText();
    EXPECT_TRUE(job.StartJob().IsSuccess()) << job.GetErrorText();
}

nxTestProduct& nxScriptJob::AddProduct(const std::string& name, unsigned int id)
{
    auto product = std::make_unique<nxTestProduct>(&host, nxGenericProductID(name), id);
    nxTestProduct& result = *product;
    host.products[name] = std::move(product);
    return result;
}

std::string nxScriptJob::Evaluate(const std::string& code)
{
    const bool isDone =
        _event ? job.OnParameter("", code, "").IsSuccess() && _event() : job.OnTimer(code).IsSuccess();
    if (!isDone) return "failed: " + job.GetErrorText();
    if (host.calls.empty()) return "no answer";
    const std::string answer = host.calls.back();
    host.calls.pop_back();
    return answer;
}

std::string nxScriptJob::Tell(const std::string& code)
{
    nxRecordingLog log;
    std::string outcome = Evaluate(code);
    const std::string calls = host.TakeCalls();
    if (!calls.empty()) outcome += " || " + calls;
    std::string lines = log.TakeLines();
    if (lines.empty()) return outcome;
    lines.pop_back();
    for (const auto& [from, to] : {std::pair("[test] ", ""), std::pair("\n", "; ")})
        for (std::size_t at = 0; (at = lines.find(from, at)) != std::string::npos;)
            lines.replace(at, std::strlen(from), to);
    return outcome + " || " + lines;
}

void nxScriptJob::ExpectRows(const std::string& file, const std::string& part)
{
    nxExpectRows(
        "scripts/" + file, [this](const std::string& code) { return Evaluate(code); }, part);
}
