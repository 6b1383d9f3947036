#include "host/exchange/nxExchangeOrder.h"

#include <algorithm>

namespace {

template <class Value>
void Take(Value& field, const Value& change)
{
    if (!change.IsNoChange()) field = change;
}

constexpr const char* Executions[] = {"", "IOC", "FOK", "STOP", "ICEBERG", "TRAILING_STOP", "BRACKET"};
constexpr const char* Durations[] = {"GFD", "GTD", "GTC", "OPEN", "PREOPEN"};

template <class Value, std::size_t size>
bool SetFromText(const std::string& text, const char* const (&texts)[size], Value& value)
{
    const auto found = std::ranges::find(texts, text);
    if (found != std::end(texts)) value = static_cast<Value>(found - std::begin(texts));
    return found != std::end(texts);
}

}  // namespace

bool nxSetFromText(const std::string& text, nxOrderExecution& execution)
{
    return SetFromText(text, Executions, execution);
}

bool nxSetFromText(const std::string& text, nxOrderDuration& duration)
{
    return SetFromText(text, Durations, duration);
}

const char* nxGetText(nxOrderExecution execution)
{
    return Executions[static_cast<std::size_t>(execution)];
}

const char* nxGetText(nxOrderDuration duration)
{
    return Durations[static_cast<std::size_t>(duration)];
}

nxOrderTerms nxOrderTerms::MakeNoChange()
{
    nxOrderTerms terms;
    for (nxVolume* field :
         {&terms.volume, &terms.icebergMinPeak, &terms.icebergMaxPeak, &terms.icebergThreshold,
          &terms.bracketProfit, &terms.bracketStopLoss, &terms.bracketStopLimit})
        field->SetNoChange();
    terms.price.SetNoChange();
    terms.stopPrice.SetNoChange();
    terms.expiry.SetNoChange();
    return terms;
}

void nxOrderTerms::Merge(const nxOrderTerms& changes)
{
    Take(volume, changes.volume);
    Take(price, changes.price);
    Take(stopPrice, changes.stopPrice);
    Take(icebergMinPeak, changes.icebergMinPeak);
    Take(icebergMaxPeak, changes.icebergMaxPeak);
    Take(icebergThreshold, changes.icebergThreshold);
    Take(bracketProfit, changes.bracketProfit);
    Take(bracketStopLoss, changes.bracketStopLoss);
    Take(bracketStopLimit, changes.bracketStopLimit);
    Take(expiry, changes.expiry);
    if (changes.bracketStopIsLimit) bracketStopIsLimit = changes.bracketStopIsLimit;
    if (changes.bracketStopTrails) bracketStopTrails = changes.bracketStopTrails;
}
