#pragma once

#include <initializer_list>
#include <string>

#include "base/enums/nxBoolEnum.h"
#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxExecutionRestrictionEnum.h"
#include "base/enums/nxOrderTypeEnum.h"
#include "base/enums/nxRoundingMethodEnum.h"
#include "base/time/nxDateTime.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

class nxLuaParameter;
class nxNamedValues;
class nxPriceManipulator;

// What one call of order:work{...} changes: the values that the script's table names, and no-change in all
// others. Lives on the stack of that call; a host reads it in _WorkOrder, and copies or merges what it wants
// to keep. Which combinations make sense is the host's to judge.
class nxAlgoOrderParameters
{
public:
    nxAlgoOrderParameters() = default;
    nxAlgoOrderParameters(const nxAlgoOrderParameters&) = default;
    nxAlgoOrderParameters& operator=(const nxAlgoOrderParameters&) = default;
    virtual ~nxAlgoOrderParameters() = default;

    // Fills the fields that the table names; anything but a table names none. On false the text stands in
    // error, which must come empty, and the fields read before the failure are set.
    //
    // A valid "expiryDate" is the last key that is looked at, but for "volume", "price", "stopPrice" and
    // "stopVolume": whoever changes an iceberg or bracket value and the date needs two calls.
    [[nodiscard]] bool SetParameters(const nxLuaParameter& parameter, std::string& error,
                                     const nxPriceManipulator& manipulator,
                                     const nxRoundingMethodEnum& rounding);
    // Takes every field of other that is not at no-change, nulls included; never algoID and accountID, which
    // belong to one call.
    void Merge(const nxAlgoOrderParameters& other);
    // Logs the fields that have a value in one line behind prefix.
    void Show(const std::string& prefix) const;

    bool IsContingent() const { return _minVol.IsValid() || _payVol.IsValid(); }
    bool IsFinesse() const { return _finesseTicks.IsValid() && _finesseVolume.IsValid(); }

    const nxVolume& GetVolume() const { return _volume; }
    const nxDecimal& GetPrice() const { return _price; }          // a valid price of the product
    const nxDecimal& GetStopPrice() const { return _stopPrice; }  // as the script gave it
    const nxVolume& GetStopVolume() const { return _stopVolume; }
    const nxVolume& GetIcebergMinPeakSize() const { return _icebergMinPeakSize; }
    const nxVolume& GetIcebergMaxPeakSize() const { return _icebergMaxPeakSize; }
    const nxVolume& GetIcebergThreshold() const { return _icebergThreshold; }
    const nxVolume& GetBracketProfitTicks() const { return _bracketProfitTicks; }
    const nxVolume& GetBracketStopLossTicks() const { return _bracketStopLossTicks; }
    const nxOrderTypeEnum& GetBracketStopLossOrderType() const { return _bracketStopLossOrderType; }
    const nxVolume& GetBracketStopLossOrderTicksFromTrigger() const
    {
        return _bracketStopLossOrderTicksFromTrigger;
    }
    const nxVolume& GetBracketStopLossOrderVolumeThreshold() const
    {
        return _bracketStopLossOrderVolumeThreshold;
    }
    // Trailing stop or stop.
    const nxExecutionRestrictionEnum& GetBracketStopLossOrderExecutionRestriction() const
    {
        return _bracketStopLossOrderExecutionRestriction;
    }
    const nxDateTime& GetExpiryDate() const { return _expiryDate; }
    const nxVolume& GetPayVol() const { return _payVol; }
    const nxVolume& GetMinVol() const { return _minVol; }
    const nxVolume& GetAlgoID() const { return _algoID; }
    const nxVolume& GetFinesseTicks() const { return _finesseTicks; }
    const nxVolume& GetFinesseVolume() const { return _finesseVolume; }
    const nxBoolEnum& GetFinessePaperOnly() const { return _finessePaperOnly; }
    const nxVolume& GetAccountID() const { return _accountID; }

private:
    struct NumberKey
    {
        const char* key;
        nxVolume& field;
    };
    // Each gives false after a failure told in error.
    static bool _SetNumbers(const nxNamedValues& table, std::initializer_list<NumberKey> keys,
                            std::string& error);
    bool _SetExpiryDate(const std::string& text, std::string& error);
    bool _SetIcebergParameters(const nxNamedValues& table, std::string& error);
    bool _SetBracketParameters(const nxNamedValues& table, std::string& error);
    bool _SetFinesseParameters(const nxNamedValues& table, std::string& error);

    // Whether the key was given; then error tells whether it was good.
    bool _GetDecimalValue(const nxNamedValues& table, const char* key, const nxPriceManipulator& manipulator,
                          const nxRoundingMethodEnum& rounding, nxDecimal& target, std::string& error);
    static std::string _GetErrorString(const std::string& key, const std::string& value,
                                       const nxErrorEnum& error);

    nxVolume _volume = nxNoChangeInitalizer();
    nxDecimal _price = nxNoChangeInitalizer();
    nxDecimal _stopPrice = nxNoChangeInitalizer();
    nxVolume _stopVolume = nxNoChangeInitalizer();
    nxVolume _icebergMinPeakSize = nxNoChangeInitalizer();
    nxVolume _icebergMaxPeakSize = nxNoChangeInitalizer();
    nxVolume _icebergThreshold = nxNoChangeInitalizer();
    nxVolume _bracketProfitTicks = nxNoChangeInitalizer();
    nxVolume _bracketStopLossTicks = nxNoChangeInitalizer();
    nxOrderTypeEnum _bracketStopLossOrderType = nxEnum_NoChange;
    nxVolume _bracketStopLossOrderTicksFromTrigger = nxNoChangeInitalizer();
    nxVolume _bracketStopLossOrderVolumeThreshold = nxNoChangeInitalizer();
    nxExecutionRestrictionEnum _bracketStopLossOrderExecutionRestriction = nxEnum_NoChange;
    nxDateTime _expiryDate = nxDateTime::NX_DATE_TIME_NO_CHANGE;
    nxVolume _payVol = nxNoChangeInitalizer();
    nxVolume _minVol = nxNoChangeInitalizer();
    nxVolume _algoID = nxNoChangeInitalizer();
    nxVolume _finesseTicks = nxNoChangeInitalizer();
    nxVolume _finesseVolume = nxNoChangeInitalizer();
    nxBoolEnum _finessePaperOnly = nxEnum_NoChange;
    nxVolume _accountID = nxNoChangeInitalizer();
};
