#include "host/sweep/nxSobolSequence.h"

#include <boost/random/sobol.hpp>

#include "host/results/nxSplitMix.h"

struct nxSobolSequence::Engine
{
    explicit Engine(std::size_t dimensions) : sequence(dimensions) {}

    boost::random::sobol_engine<unsigned int, 32> sequence;
    unsigned long long next = 1;  // the number of the point that it gives next; it leaves out the first one
};

nxSobolSequence::nxSobolSequence(std::size_t dimensions)
    : _engine(std::make_unique<Engine>(dimensions)), _shifts(dimensions), _point(dimensions)
{
}

nxSobolSequence::nxSobolSequence(std::size_t dimensions, unsigned long long seed)
    : nxSobolSequence(dimensions)
{
    nxSplitMix random(seed);
    for (unsigned int& shift : _shifts)
        shift = static_cast<unsigned int>(random.GetBits() >> 32);
}

nxSobolSequence::~nxSobolSequence() = default;

const std::vector<double>& nxSobolSequence::GetPoint(unsigned long long number)
{
    if (number != 0 && number != _engine->next) _engine->sequence.seed(static_cast<unsigned int>(number - 1));
    for (std::size_t i = 0; i < _point.size(); ++i) {
        const unsigned int bits = number == 0 ? 0 : _engine->sequence();
        _point[i] = (static_cast<double>(bits ^ _shifts[i]) + 0.5) * 0x1p-32;
    }
    if (number != 0) _engine->next = number + 1;
    return _point;
}
