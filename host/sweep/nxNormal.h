#pragma once

// The normal distribution with mean 0 and deviation 1.
namespace nxNormal {
// How likely a value is at most `x`.
double GetProbability(double x);
// The value that one is below with that probability, which is above 0 and below 1.
double GetQuantile(double probability);
}  // namespace nxNormal
