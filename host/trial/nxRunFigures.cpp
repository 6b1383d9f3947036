#include "host/trial/nxRunFigures.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/report/nxResultLines.h"
#include "host/report/nxResultSections.h"
#include "host/results/nxMeasures.h"

namespace {

struct Count
{
    const char* name;
    const char* title;
    unsigned long long nxResultData::*member;
};
constexpr Count Counts[] = {{"orders", "Orders", &nxResultData::orders},
                            {"fills", "Fills", &nxResultData::fills},
                            {"volume", "Volume", &nxResultData::volume}};
// Those that the summary tells beside its lines of measures.
constexpr const char* Money[] = {"netProfit", "fees", "maxDrawdown"};

const Count* FindCount(const std::string& name)
{
    const auto found = std::ranges::find(Counts, name, &Count::name);
    return found == std::end(Counts) ? nullptr : found;
}

std::string GetAccount(const nxResultData& data, const nxResult& result)
{
    std::string account;
    if (result.jobs.size() > 1) account = data.job ? result.jobs[*data.job].name : "all";
    const std::string currency = nxGetCurrency(data);
    account += (account.empty() || currency.empty() ? "" : " ") + currency;
    std::ranges::replace_if(
        account, [](char letter) { return letter == '\t' || letter == '\n'; }, ' ');
    return account;
}

// One of a text's cells, which is taken from it.
std::string_view Cut(std::string_view& text, char end)
{
    const std::size_t place = std::min(text.find(end), text.size());
    const std::string_view cell = text.substr(0, place);
    text.remove_prefix(std::min(place + 1, text.size()));
    return cell;
}

}  // namespace

nxRunFigures::nxRunFigures(const nxResult& result)
{
    for (const nxResultData& data : result.results) {
        const std::string account = GetAccount(data, result);
        for (const Count& count : Counts)
            _figures.push_back({account, count.name, static_cast<double>(data.*count.member)});
        const nxMeasureBasis basis(data, result.run);
        const auto add = [&](const char* name) {
            _figures.push_back({account, name, nxMeasure::Get(name).compute(basis)});
        };
        std::ranges::for_each(Money, add);
        std::ranges::for_each(nxResultLines::Names, add);
    }
}

std::string nxRunFigures::Pack() const
{
    std::string text;
    for (const Figure& figure : _figures)
        text += fmt::format("{}\t{}\t{}\n", figure.account, figure.name, figure.value);
    return text;
}

nxRunFigures nxRunFigures::Unpack(std::string_view text)
{
    nxRunFigures figures;
    while (!text.empty()) {
        std::string_view line = Cut(text, '\n');
        Figure figure;
        figure.account = Cut(line, '\t');
        figure.name = Cut(line, '\t');
        const auto& measures = nxMeasure::GetAll();
        const bool isKnown = FindCount(figure.name) != nullptr ||
                             std::ranges::find(measures, figure.name, &nxMeasure::name) != measures.end();
        if (isKnown &&
            std::from_chars(line.data(), line.data() + line.size(), figure.value).ec == std::errc())
            figures._figures.push_back(std::move(figure));
    }
    return figures;
}

nxRunFigures::Row nxRunFigures::_Compare(const Figure* before, const Figure* now)
{
    const Figure& figure = now == nullptr ? *before : *now;
    const Count* const count = FindCount(figure.name);
    const nxMeasure* const measure = count == nullptr ? &nxMeasure::Get(figure.name.c_str()) : nullptr;
    const auto tell = [&](double value) {
        return measure == nullptr ? fmt::format("{:.0f}", value) : nxResultLines::GetText(*measure, value);
    };
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    const double first = before == nullptr ? unknown : before->value;
    const double second = now == nullptr ? unknown : now->value;
    const auto tellKnown = [&](double value) { return std::isnan(value) ? std::string("-") : tell(value); };
    const double difference = second - first;
    const std::string sign = difference > 0.0 ? "+" : "";
    const std::string title = count == nullptr ? measure->title : count->title;
    return {figure.account.empty() ? title : figure.account + "  " + title, tellKnown(first),
            tellKnown(second), std::isnan(difference) ? "" : sign + tell(difference)};
}

std::vector<nxRunFigures::Row> nxRunFigures::_FindChanges(const nxRunFigures& before) const
{
    const auto find = [](const nxRunFigures& figures, const Figure& figure) {
        const auto found =
            std::ranges::find_if(figures._figures, [&](const Figure& other) { return other.IsSame(figure); });
        return found == figures._figures.end() ? nullptr : &*found;
    };
    std::vector<Row> rows;
    for (const Figure& figure : _figures) {
        const Figure* const old = find(before, figure);
        const bool isSame = old != nullptr && (old->value == figure.value ||
                                               (std::isnan(old->value) && std::isnan(figure.value)));
        if (!isSame) rows.push_back(_Compare(old, &figure));
    }
    for (const Figure& figure : before._figures)
        if (find(*this, figure) == nullptr) rows.push_back(_Compare(&figure, nullptr));
    return rows;
}

void nxRunFigures::WriteChanges(std::ostream& out, const nxRunFigures& before) const
{
    const std::vector<Row> rows = _FindChanges(before);
    if (rows.empty()) {
        out << "no change\n";
        return;
    }
    std::size_t width = 20;
    for (const Row& row : rows)
        width = std::max(width, row.title.size());
    out << fmt::format("{:<{}}{:>14}{:>14}{:>14}\n", "measure", width, "before", "now", "difference");
    for (const Row& row : rows) {
        std::string line =
            fmt::format("{:<{}}{:>14}{:>14}{:>14}", row.title, width, row.before, row.now, row.difference);
        line.resize(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}
