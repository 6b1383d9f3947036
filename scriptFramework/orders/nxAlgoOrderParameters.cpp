#include "scriptFramework/orders/nxAlgoOrderParameters.h"

#include "base/log/nxLogMessage.h"
#include "base/values/nxPriceManipulator.h"
#include "base/values/nxStringHelper.h"
#include "scriptFramework/orders/nxNamedValues.h"

using Self = nxAlgoOrderParameters;

bool nxAlgoOrderParameters::SetParameters(const nxLuaParameter& parameter, std::string& error,
                                          const nxPriceManipulator& manipulator,
                                          const nxRoundingMethodEnum& rounding)
{
    const nxNamedValues table(parameter);
    if (!_SetNumbers(table, {{"volume", _volume}}, error)) return false;
    if (_GetDecimalValue(table, "price", manipulator, rounding, _price, error) && !error.empty())
        return false;
    if (_GetDecimalValue(table, "stopPrice", manipulator, rounding, _stopPrice, error) && !error.empty())
        return false;
    if (!_SetNumbers(table, {{"stopVolume", _stopVolume}}, error)) return false;

    // A valid date ends the reading, which is kept: scripts give dates and peaks in calls of their own.
    std::string expiryDate;
    if (table.Get("expiryDate", expiryDate)) return _SetExpiryDate(expiryDate, error);

    return _SetIcebergParameters(table, error) && _SetBracketParameters(table, error) &&
           _SetFinesseParameters(table, error) &&
           _SetNumbers(table,
                       {{"minVolume", _minVol},
                        {"payUpVolume", _payVol},
                        {"algoID", _algoID},
                        {"accountID", _accountID}},
                       error);
}

bool nxAlgoOrderParameters::_SetNumbers(const nxNamedValues& table, std::initializer_list<NumberKey> keys,
                                        std::string& error)
{
    std::string text;
    for (const auto& [key, field] : keys) {
        if (!table.Get(key, text)) continue;
        const nxErrorEnum result = field.SetFromString(text);
        if (result.IsSuccess()) continue;
        error = _GetErrorString(key, text, result);
        return false;
    }
    return true;
}

bool nxAlgoOrderParameters::_GetDecimalValue(const nxNamedValues& table, const char* key,
                                             const nxPriceManipulator& manipulator,
                                             const nxRoundingMethodEnum& rounding, nxDecimal& target,
                                             std::string& error)
{
    std::string text;
    if (!table.Get(key, text)) return false;
    const nxErrorEnum result = target.SetFromString(text, '.');
    if (!result.IsSuccess()) {
        // Lua writes very small and very large numbers with an exponent.
        constexpr unsigned char places = 10;
        double number = 0.0;
        if (table.Get(key, number)) {
            target.SetFromDouble(number, places);
        } else {
            error = _GetErrorString(key, text, result);
        }
    }
    // The price, whichever key was read, which is kept: a stop price stays as the script gave it.
    _price.Round(manipulator, rounding);
    return true;
}

std::string nxAlgoOrderParameters::_GetErrorString(const std::string& key, const std::string& value,
                                                   const nxErrorEnum& error)
{
    return "Can not set " + key + " to [" + value + "]. " + error.GetLongDescription();
}

bool nxAlgoOrderParameters::_SetExpiryDate(const std::string& text, std::string& error)
{
    const auto read = [&](std::size_t position, std::size_t count, int& out) {
        return nxStringHelper::SetFromString(std::string_view(text).substr(position, count), out).IsSuccess();
    };
    int year = 0;
    int month = 0;
    int day = 0;
    if (text.size() == 8 && read(0, 4, year) && read(4, 2, month) && read(6, 2, day)) {
        try {
            _expiryDate = nxDateTime(year, month, day, 0, 0, 0, 0);
            return true;
        } catch (...) {
            // No such date.
        }
    }
    error = "Invalid expiryDate = [" + text + "] should be of form YYYYMMDD";
    return false;
}

bool nxAlgoOrderParameters::_SetIcebergParameters(const nxNamedValues& table, std::string& error)
{
    return _SetNumbers(table,
                       {{"icebergMinPeakSize", _icebergMinPeakSize},
                        {"icebergMaxPeakSize", _icebergMaxPeakSize},
                        {"icebergThreshold", _icebergThreshold}},
                       error);
}

bool nxAlgoOrderParameters::_SetBracketParameters(const nxNamedValues& table, std::string& error)
{
    if (!_SetNumbers(table,
                     {{"bracketProfit", _bracketProfitTicks}, {"bracketStopLoss", _bracketStopLossTicks}},
                     error))
        return false;
    std::string text;
    if (table.Get("bracketStopLossType", text)) {
        if (text != "MARKET" && text != "LIMIT") {
            error = "Can not set bracketStopLossType to ]" + text + "] should be MARKET or LIMIT";  // sic
            return false;
        }
        _bracketStopLossOrderType = text == "MARKET" ? nxOrderType_Market : nxOrderType_Limit;
    }
    if (!_SetNumbers(table, {{"bracketStopLossLimit", _bracketStopLossOrderTicksFromTrigger}}, error))
        return false;
    // A text, not a boolean, which would count as not given; no text is refused.
    if (table.Get("bracketStopLossTrailing", text))
        _bracketStopLossOrderExecutionRestriction =
            text == "true" ? nxExecutionRestriction_TrailingStop : nxExecutionRestriction_Stop;
    return _SetNumbers(table, {{"bracketStopLossVolume", _bracketStopLossOrderVolumeThreshold}}, error);
}

bool nxAlgoOrderParameters::_SetFinesseParameters(const nxNamedValues& table, std::string& error)
{
    if (!_SetNumbers(table, {{"finesseTicks", _finesseTicks}, {"finesseVolume", _finesseVolume}}, error))
        return false;
    std::string text;
    if (!table.Get("finessePaperOnly", text) || _finessePaperOnly.SetFromString(text)) return true;
    // The error of the last conversion, a success by now: it does not describe this failure, and is kept.
    error = _GetErrorString("finessePaperOnly", text, nxErrorEnum());
    return false;
}

void nxAlgoOrderParameters::Merge(const nxAlgoOrderParameters& other)
{
    const auto overlay = [&](auto... fields) {
        const auto take = [&](auto field) {
            if (!(other.*field).IsNoChange()) this->*field = other.*field;
        };
        (take(fields), ...);
    };
    overlay(&Self::_volume, &Self::_price, &Self::_stopPrice, &Self::_stopVolume, &Self::_icebergMinPeakSize,
            &Self::_icebergMaxPeakSize, &Self::_icebergThreshold, &Self::_bracketProfitTicks,
            &Self::_bracketStopLossTicks, &Self::_bracketStopLossOrderType,
            &Self::_bracketStopLossOrderTicksFromTrigger, &Self::_bracketStopLossOrderVolumeThreshold,
            &Self::_bracketStopLossOrderExecutionRestriction, &Self::_expiryDate, &Self::_payVol,
            &Self::_minVol, &Self::_finesseTicks, &Self::_finesseVolume, &Self::_finessePaperOnly);
}

void nxAlgoOrderParameters::Show(const std::string& prefix) const
{
    if (!nxLogManager::ShouldLog(nxLogLevel::Info)) return;
    std::string line = prefix;
    line.reserve(271);
    const auto add = [&](const char* label, const std::string& value) {
        line.append(label).append(value).append(")");
    };
    const auto number = [&](const char* label, const nxVolume& value) {
        if (value.IsValid()) add(label, value.GetAsString());
    };
    const auto price = [&](const char* label, const nxDecimal& value) {
        if (value.IsValid()) add(label, value.GetAsLogString('.'));
    };
    // A null shows as empty parentheses here, and not at all above.
    const auto change = [&](const char* label, const auto& value) {
        if (!value.IsNoChange()) add(label, value.GetAsString());
    };
    number(" Volume (", _volume);
    price(" Price (", _price);
    price(" Stop Price (", _stopPrice);
    number(" Stop Volume (", _stopVolume);
    number(" Iceberg Min Peak Size (", _icebergMinPeakSize);
    number(" Iceberg Mix Peak Size (", _icebergMaxPeakSize);  // sic
    number(" Iceberg Threshold (", _icebergThreshold);
    number(" Bracket Profit Ticks (", _bracketProfitTicks);
    number(" Bracket Stop Loss Ticks (", _bracketStopLossTicks);
    change(" Bracket Stop Loss Order Type (", _bracketStopLossOrderType);
    number(" Bracket Stop Loss Limit Ticks (", _bracketStopLossOrderTicksFromTrigger);
    number(" Bracket Stop Loss Volume (", _bracketStopLossOrderVolumeThreshold);
    change(" Bracket Stop Loss Execution (", _bracketStopLossOrderExecutionRestriction);
    change(" Expiry Date (", _expiryDate);
    change(" Pay Up Volume (", _payVol);
    change(" Min Volume (", _minVol);
    change(" Finesse Ticks (", _finesseTicks);
    change(" Finesse Volume (", _finesseVolume);
    change(" Finesse Paper Only (", _finessePaperOnly);
    nxLogMessage(nxLogLevel::Info, line);
}
