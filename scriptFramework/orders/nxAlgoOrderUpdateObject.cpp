#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

#include "base/log/nxLogMessage.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"

using Self = nxAlgoOrderUpdateObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"isSpreadUnbalanced", &Self::isSpreadUnbalanced},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"side", &Self::Get_side, nullptr},
    {"reference", &Self::Get_reference, nullptr},
    {"working", &Self::Get_working, nullptr},
    {"volume", &Self::Get_volume, nullptr},
    {"price", &Self::Get_price, nullptr},
    {"executed", &Self::Get_executed, nullptr},
    {"fillPrice", &Self::Get_fillPrice, nullptr},
    {"fillVolume", &Self::Get_fillVolume, nullptr},
    {"order", &Self::Get_order, nullptr},
    {"error", &Self::Get_error, nullptr},
    {"vorantUpdateTime", &Self::Get_vorantUpdateTime, nullptr},
    {"exchangeFillTime", &Self::Get_exchangeFillTime, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

struct nxAlgoOrderUpdateObject::Clocks
{
    nxAlgoTimeStamp exchangeFill, vorantUpdate;
};

nxAlgoOrderUpdateObject::nxAlgoOrderUpdateObject(nxAlgoJobInterface* job, const nxAlgoOrderObject* order,
                                                 const nxOrderTransaction* transaction,
                                                 const nxTimeStamp& time)
    : nxAlgoObject(job),
      _transaction(transaction),
      _order(order),
      _updateSecond(time.GetAsTimeValue()),
      _updateNanoseconds(time.GetNanoseconds())
{
    // What setting a time stamp logs, though there is none yet.
    if (nxLogManager::ShouldLog(nxLogLevel::Info)) nxAlgoTimeStamp(job).SetTimeStamp(time);
}

nxAlgoOrderUpdateObject::nxAlgoOrderUpdateObject(const nxAlgoOrderUpdateObject& other)
    : nxAlgoObject(other),
      _transaction(other._transaction),
      _order(other._order),
      _exchangeFillTime(other._exchangeFillTime),
      _updateSecond(other._updateSecond),
      _updateNanoseconds(other._updateNanoseconds)
{
}

nxAlgoOrderUpdateObject& nxAlgoOrderUpdateObject::operator=(const nxAlgoOrderUpdateObject& other)
{
    nxAlgoObject::operator=(other);
    _transaction = other._transaction;
    _order = other._order;
    _exchangeFillTime = other._exchangeFillTime;
    _updateSecond = other._updateSecond;
    _updateNanoseconds = other._updateNanoseconds;
    _SetClocks();
    return *this;
}

nxAlgoOrderUpdateObject::~nxAlgoOrderUpdateObject() = default;

void nxAlgoOrderUpdateObject::SetExchangeFillTime(const nxDateTime& time)
{
    _exchangeFillTime = time;
    _SetClocks();
}

const nxOrderTransaction* nxAlgoOrderUpdateObject::_GetTransaction() const
{
    return _transaction != nullptr || _order == nullptr ? _transaction : _order->_GetLastTransaction();
}

const nxOrder* nxAlgoOrderUpdateObject::_GetRecord() const
{
    const nxOrderTransaction* const transaction = _GetTransaction();
    return transaction == nullptr ? nullptr : transaction->GetOrder();
}

bool nxAlgoOrderUpdateObject::isSpreadUnbalanced(nxLuaParameters&, nxLuaResults& results)
{
    const nxOrder* record = _GetRecord();
    results.Add(record != nullptr && record->GetOrderFlag() == nxOrderFlag_SpreadUnbalanced);
    return true;
}

bool nxAlgoOrderUpdateObject::Get_id(nxLuaResults& results)
{
    results.Add(_order == nullptr ? 0u : _order->GetID());
    return true;
}

bool nxAlgoOrderUpdateObject::Get_side(nxLuaResults& results)
{
    results.Add(_order->GetSide());
    return true;
}

bool nxAlgoOrderUpdateObject::Get_reference(nxLuaResults& results)
{
    results.Add(_order->GetReference());
    return true;
}

// The three volumes treat null and no-change in three ways, which are kept. Here the marks reach the script
// as the numbers that they are.
bool nxAlgoOrderUpdateObject::Get_working(nxLuaResults& results)
{
    const nxOrder* record = _GetRecord();
    results.Add(record == nullptr ? 0u : record->GetResidualVolume().GetValue());
    return true;
}

// Marks are 0, and so is an event without a record.
bool nxAlgoOrderUpdateObject::Get_volume(nxLuaResults& results)
{
    const nxOrder* record = _GetRecord();
    results.Add(record != nullptr && record->GetVolume().IsValid() ? record->GetVolume().GetValue() : 0u);
    return true;
}

bool nxAlgoOrderUpdateObject::Get_price(nxLuaResults& results)
{
    const nxOrder* record = _GetRecord();
    results.Add(record == nullptr ? nxDecimal() : record->GetPrice());
    return true;
}

bool nxAlgoOrderUpdateObject::Get_executed(nxLuaResults& results)
{
    const nxOrder* record = _GetRecord();
    const nxVolume executed = record == nullptr ? nxVolume() : record->GetExecutedVolume();
    results.Add(executed.IsValid() ? executed.GetValue() : 0u);
    return true;
}

bool nxAlgoOrderUpdateObject::Get_fillPrice(nxLuaResults& results)
{
    const nxDecimal& price = _GetTransaction()->GetFillPrice();
    results.Add(price.IsValid() ? price.GetAsDouble() : 0.0);
    return true;
}

// Marks are 0, and the record is not tested.
bool nxAlgoOrderUpdateObject::Get_fillVolume(nxLuaResults& results)
{
    const nxVolume& volume = _GetTransaction()->GetFillVolume();
    results.Add(volume.IsValid() ? volume.GetValue() : 0u);
    return true;
}

bool nxAlgoOrderUpdateObject::Get_order(nxLuaResults& results)
{
    // Scripts work the orders that they are told of.
    results.AddObject(const_cast<nxAlgoOrderObject*>(_order));
    return true;
}

bool nxAlgoOrderUpdateObject::Get_error(nxLuaResults& results)
{
    const nxOrderTransaction* const transaction = _GetTransaction();
    const bool failed = transaction != nullptr && !transaction->GetError().IsSuccess();
    results.Add(failed ? transaction->GetError().GetAsString() : std::string());
    return true;
}

void nxAlgoOrderUpdateObject::_SetClocks()
{
    if (_clocks == nullptr) return;
    _clocks->vorantUpdate = nxAlgoTimeStamp(GetJob(), nxTimeStamp(_updateSecond, _updateNanoseconds));
    _clocks->exchangeFill.SetDateTime(_exchangeFillTime);
}

bool nxAlgoOrderUpdateObject::_GiveClock(nxLuaResults& results, nxAlgoTimeStamp Clocks::*clock)
{
    if (_clocks == nullptr) {
        _clocks = std::make_unique<Clocks>(Clocks{nxAlgoTimeStamp(GetJob()), nxAlgoTimeStamp(GetJob())});
        _SetClocks();
    }
    nxAlgoTimeStamp& time = (*_clocks).*clock;
    results.AddObjectOrNull<nxAlgoClockObject>(time.IsValid() ? &time : nullptr);
    return true;
}

bool nxAlgoOrderUpdateObject::Get_vorantUpdateTime(nxLuaResults& results)
{
    return _GiveClock(results, &Clocks::vorantUpdate);
}

bool nxAlgoOrderUpdateObject::Get_exchangeFillTime(nxLuaResults& results)
{
    return _GiveClock(results, &Clocks::exchangeFill);
}
