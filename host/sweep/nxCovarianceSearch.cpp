#include "host/sweep/nxCovarianceSearch.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>

#include "host/results/nxSplitMix.h"
#include "host/sweep/nxNormal.h"

namespace {

constexpr double FirstDeviation = 0.3;

// Back and forth between 0 and 1.
double Mirror(double x)
{
    const double folded = std::fmod(std::abs(x), 2.0);
    return std::min(folded > 1.0 ? 2.0 - folded : folded, 1.0 - 0x1p-53);
}

}  // namespace

// The names are those of the tutorial.
struct nxCovarianceSearch::State
{
    State(const std::vector<nxDimension>& dimensions, std::size_t generation, unsigned long long seed)
        : n(static_cast<Eigen::Index>(dimensions.size())), random(seed), spent(n)
    {
        const auto N = static_cast<double>(n);
        lambda = std::max(generation, 4 + static_cast<std::size_t>(3.0 * std::log(N)));
        mu = lambda / 2;
        weights = Eigen::VectorXd(static_cast<Eigen::Index>(mu));
        for (Eigen::Index i = 0; i < weights.size(); ++i)
            weights[i] =
                std::log((static_cast<double>(lambda) + 1.0) / 2.0) - std::log(static_cast<double>(i) + 1.0);
        weights /= weights.sum();
        muEff = 1.0 / weights.squaredNorm();
        cc = (4.0 + muEff / N) / (N + 4.0 + 2.0 * muEff / N);
        cs = (muEff + 2.0) / (N + muEff + 5.0);
        c1 = 2.0 / ((N + 1.3) * (N + 1.3) + muEff);
        cmu = std::min(1.0 - c1, 2.0 * (muEff - 2.0 + 1.0 / muEff) / ((N + 2.0) * (N + 2.0) + muEff));
        damps = 1.0 + 2.0 * std::max(0.0, std::sqrt((muEff - 1.0) / (N + 1.0)) - 1.0) + cs;
        chiN = std::sqrt(N) * (1.0 - 1.0 / (4.0 * N) + 1.0 / (21.0 * N * N));
        for (Eigen::Index i = 0; i < n; ++i) {
            const unsigned long long count = dimensions[static_cast<std::size_t>(i)].GetCount();
            spent[i] = count == 0 ? 1e-9 : 0.1 / static_cast<double>(count);
        }
        Begin(Eigen::VectorXd::Constant(n, 0.5));
    }

    void Begin(const Eigen::VectorXd& where)
    {
        mean = where;
        sigma = FirstDeviation;
        C = Eigen::MatrixXd::Identity(n, n);
        ps = pc = Eigen::VectorXd::Zero(n);
        generations = 0;
        Decompose();
    }

    void Decompose()
    {
        const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(C);
        B = solver.eigenvectors();
        D = solver.eigenvalues().cwiseMax(1e-30).cwiseSqrt();
    }

    Eigen::VectorXd DrawUniform()
    {
        return Eigen::VectorXd::NullaryExpr(n, [this] { return random.GetNext() + 0x1p-54; });
    }
    Eigen::VectorXd DrawStep()
    {
        const Eigen::VectorXd z =
            DrawUniform().unaryExpr([](double share) { return nxNormal::GetQuantile(share); });
        return B * D.cwiseProduct(z);
    }

    // Of the steps from the best to the worst.
    void Learn(const std::vector<std::size_t>& order)
    {
        Eigen::VectorXd step = Eigen::VectorXd::Zero(n);
        Eigen::MatrixXd spread = Eigen::MatrixXd::Zero(n, n);
        for (Eigen::Index i = 0; i < weights.size(); ++i) {
            const Eigen::VectorXd& y = steps[order[static_cast<std::size_t>(i)]];
            step += weights[i] * y;
            spread += weights[i] * y * y.transpose();
        }
        mean += sigma * step;
        ps = (1.0 - cs) * ps +
             std::sqrt(cs * (2.0 - cs) * muEff) * (B * (B.transpose() * step).cwiseQuotient(D));
        ++generations;
        const auto N = static_cast<double>(n);
        const bool isCalm = ps.norm() / std::sqrt(1.0 - std::pow(1.0 - cs, 2.0 * generations)) <
                            (1.4 + 2.0 / (N + 1.0)) * chiN;
        pc = (1.0 - cc) * pc + (isCalm ? std::sqrt(cc * (2.0 - cc) * muEff) : 0.0) * step;
        const double lost = isCalm ? 0.0 : cc * (2.0 - cc);
        C = (1.0 + c1 * lost - c1 - cmu) * C + c1 * pc * pc.transpose() + cmu * spread;
        sigma = std::min(1.0, sigma * std::exp(cs / damps * (ps.norm() / chiN - 1.0)));
        Decompose();
    }

    bool IsSpent() const { return (sigma * C.diagonal().cwiseSqrt()).cwiseQuotient(spent).maxCoeff() < 1.0; }

    Eigen::Index n;
    nxSplitMix random;
    std::size_t lambda = 0, mu = 0;
    Eigen::VectorXd weights;
    double muEff = 0.0, cc = 0.0, cs = 0.0, c1 = 0.0, cmu = 0.0, damps = 0.0, chiN = 0.0;
    Eigen::VectorXd spent;  // the deviation below which a dimension has nothing left to find

    Eigen::VectorXd mean, ps, pc, D;
    Eigen::MatrixXd C, B;
    double sigma = 0.0, generations = 0.0;
    std::vector<Eigen::VectorXd> steps;  // of the generation, from the mean in units of sigma
};

nxCovarianceSearch::nxCovarianceSearch(const std::vector<nxDimension>& dimensions, std::size_t generation,
                                       unsigned long long seed)
    : _state(std::make_unique<State>(dimensions, generation, seed))
{
}

nxCovarianceSearch::~nxCovarianceSearch() = default;

nxSearch::Points nxCovarianceSearch::_Propose()
{
    if (_state->IsSpent()) _state->Begin(_state->DrawUniform());
    Points points;
    _state->steps.clear();
    for (std::size_t i = 0; i < _state->lambda; ++i) {
        _state->steps.push_back(_state->DrawStep());
        const Eigen::VectorXd x = _state->mean + _state->sigma * _state->steps.back();
        points.emplace_back(x.begin(), x.end());
        std::ranges::transform(points.back(), points.back().begin(), Mirror);
    }
    return points;
}

void nxCovarianceSearch::_Learn(const Points&, const std::vector<double>& values)
{
    const std::vector<std::size_t> order = _GetOrder(values);
    // A flat generation says nothing: look farther.
    const double best = values[order.front()], middle = values[order[_state->mu]];
    if (!(best > middle)) _state->sigma = std::min(1.0, _state->sigma * 1.5);
    _state->Learn(order);
}
