#include "host/exchange/nxQueueModel.h"

#include <algorithm>

namespace {

// In proportion to what is ahead, rounded down.
unsigned int AdvanceEvenly(unsigned int ahead, unsigned int shown, unsigned int cancelled, unsigned int)
{
    return ahead - static_cast<unsigned int>(static_cast<unsigned long long>(cancelled) * ahead / shown);
}

unsigned int Stay(unsigned int ahead, unsigned int, unsigned int, unsigned int)
{
    return ahead;
}

// A cancelled lot stood in front with the probability front^n / (front^n + behind^n): those who stand far in
// front have waited long and stay (E. Rigtorp, Estimating order queue position, 2013).
unsigned int AdvanceByPower(unsigned int ahead, unsigned int shown, unsigned int cancelled,
                            unsigned int power)
{
    // Shares keep the powers between 0 and 1.
    const double front = static_cast<double>(ahead) / shown;
    double inFront = 1.0, behind = 1.0;
    for (unsigned int i = 0; i < power; ++i) {
        inFront *= front;
        behind *= 1.0 - front;
    }
    // The little more is for whole numbers, which must not come out a hair below themselves.
    const double gone = cancelled * (inFront / (inFront + behind)) * (1.0 + 1e-12);
    return ahead - std::min(ahead, static_cast<unsigned int>(gone));
}

constexpr nxQueueModel Models[] = {
    {"even", "anywhere in the queue", AdvanceEvenly, false},
    {"back", "behind the order: only trades move it up", Stay, false},
    {"power", "seldom far in front: by the shares in front and behind to a power", AdvanceByPower, true},
};

}  // namespace

std::span<const nxQueueModel> nxQueueModel::GetAll()
{
    return Models;
}

bool nxQueueRule::SetFromText(const std::string& text)
{
    const std::size_t colon = text.find(':');
    const auto found = std::ranges::find(Models, text.substr(0, colon), &nxQueueModel::name);
    if (found == std::end(Models)) return false;
    if (colon != text.npos) {
        if (!found->takesPower || text.size() != colon + 2) return false;
        const char digit = text.back();
        if (digit < '1' || digit > '9') return false;
        power = static_cast<unsigned int>(digit - '0');
    }
    model = found;
    return true;
}
