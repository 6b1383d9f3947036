#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/sweep/nxDimension.h"
#include "host/sweep/nxExpression.h"
#include "host/sweep/nxPlanEntry.h"
#include "host/sweep/nxTimeSplits.h"

// Which runs a sweep makes, what it calls the best of them, and over which parts of the data. A value.
class nxPlan
{
public:
    enum class Method : unsigned char { Grid, Random, Sobol, TreeParzen, CovarianceMatrix };

    // Takes entries in their order; of the same scalar, or the same dimension, a later one replaces an
    // earlier one, so that options go before a file. `measures` are the names for maximise, minimise and
    // constraints. Null, or what is wrong, with its place in front; the plan is then undefined.
    [[nodiscard]] std::optional<std::string> SetFromEntries(const std::vector<nxPlanEntry>& entries,
                                                            const std::vector<std::string>& measures);
    // For messages.
    static std::string GetKeys();

    const std::vector<nxDimension>& GetDimensions() const { return _dimensions; }
    // Over the numbers of the dimensions in their order.
    const std::vector<nxExpression>& GetConditions() const { return _conditions; }
    bool IsAllowed(std::span<const double> numbers) const;
    const std::vector<nxExpression>& GetConstraints() const { return _constraints; }

    Method GetMethod() const { return _method; }
    unsigned long long GetRuns() const { return _runs; }  // of a grid 0: all
    unsigned long long GetSeed() const { return _seed; }
    bool IsScrambled() const { return _isScrambled; }
    const nxTimeSplits& GetSplits() const { return _splits; }

    // What to maximise of a run's measures, in the order of their names, a null one not a number. Not a
    // number: the run has none, or a constraint does not hold.
    double GetObjective(std::span<const double> measures) const;
    bool HasObjective() const { return _objective.has_value(); }
    std::string GetObjectiveText() const { return _objective ? _objective->GetText() : std::string(); }
    bool IsMinimised() const { return _isMinimised; }

    // The same text, and SHA-256 of it, for plans that ask for the same, however they were written.
    std::string GetNormalForm() const;
    std::string GetHash() const;

private:
    friend class nxPlanReader;

    std::vector<nxDimension> _dimensions;
    std::vector<nxExpression> _conditions, _constraints;
    std::optional<nxExpression> _objective;
    bool _isMinimised = false;
    Method _method = Method::Grid;
    unsigned long long _runs = 0, _seed = 1;
    bool _isScrambled = false;
    nxTimeSplits _splits;
};
