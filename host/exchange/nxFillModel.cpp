#include "host/exchange/nxFillModel.h"

#include <algorithm>

namespace {

constexpr nxFillModel Models[] = {
    {.name = "queue",
     .help = "behind what the market shows",
     .rank = 20,
     .rule = {.fillsWhole = false, .fillsAtPrice = true}},
    {.name = "cross",
     .help = "only when traded through",
     .rank = 10,
     .rule = {.fillsWhole = false, .fillsAtPrice = false}},
    {.name = "touch", .help = "at once", .rank = 30, .rule = {.fillsWhole = true, .fillsAtPrice = true}},
};

static_assert(
    [] {
        for (const nxFillModel& model : Models)
            if (std::ranges::count(Models, model.rank, &nxFillModel::rank) != 1) return false;
        return true;
    }(),
    "two models have the same rank");

}  // namespace

std::span<const nxFillModel> nxFillModel::GetAll()
{
    return Models;
}

const nxFillModel* nxFillModel::Find(std::string_view name)
{
    const auto found = std::ranges::find(Models, name, &nxFillModel::name);
    return found == std::end(Models) ? nullptr : found;
}
