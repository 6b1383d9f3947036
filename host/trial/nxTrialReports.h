#pragma once

#include <string>
#include <vector>

#include "host/trial/nxTrial.h"

// What tests came to, for other programs; texts that are not UTF-8 have U+FFFD in place of what is not.
namespace nxTrialReports {

// As CI systems read it: a test suite for each file, whose tests stand together.
std::string GetJunit(const std::vector<nxTrialOutcome>& outcomes);
// An array with an object for each test, and for each file without any.
std::string GetJson(const std::vector<nxTrialOutcome>& outcomes);

}  // namespace nxTrialReports
