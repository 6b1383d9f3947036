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

struct nxAlgoOrderUpdateObject::Event
{
    bool isLatest = true;  // the order tells of it
    const nxOrderTransaction* transaction = nullptr;
    nxTimeStamp updateTime{0, 0};
    nxDateTime exchangeFillTime;
    std::unique_ptr<Clocks> clocks;
};

nxAlgoOrderUpdateObject::nxAlgoOrderUpdateObject(nxAlgoJobInterface* job, const nxAlgoOrderObject* order,
                                                 const nxOrderTransaction* transaction,
                                                 const nxTimeStamp& time)
    : nxAlgoObject(job), _order(order), _event(new Event{false, transaction, time, {}, nullptr})
{
    _LogTime(time);
}

nxAlgoOrderUpdateObject::nxAlgoOrderUpdateObject(nxAlgoJobInterface* job, const nxAlgoOrderObject* order)
    : nxAlgoObject(job), _order(order)
{
}

nxAlgoOrderUpdateObject::nxAlgoOrderUpdateObject(const nxAlgoOrderUpdateObject& other)
    : nxAlgoObject(other), _order(other._order)
{
    if (other._event != nullptr) *this = other;
}

nxAlgoOrderUpdateObject& nxAlgoOrderUpdateObject::operator=(const nxAlgoOrderUpdateObject& other)
{
    nxAlgoObject::operator=(other);
    _order = other._order;
    Event& event = _GetEvent();
    const Event latest;
    const Event& shown = other._event == nullptr ? latest : *other._event;
    event.isLatest = shown.isLatest;
    event.transaction = shown.transaction;
    event.updateTime = shown.updateTime;
    event.exchangeFillTime = shown.exchangeFillTime;
    _SetClocks();
    return *this;
}

nxAlgoOrderUpdateObject::~nxAlgoOrderUpdateObject() = default;

nxAlgoOrderUpdateObject::Event& nxAlgoOrderUpdateObject::_GetEvent()
{
    if (_event == nullptr) _event = std::make_unique<Event>();
    return *_event;
}

void nxAlgoOrderUpdateObject::SetExchangeFillTime(const nxDateTime& time)
{
    _GetEvent().exchangeFillTime = time;
    _SetClocks();
}

void nxAlgoOrderUpdateObject::Renew()
{
    if (nxLogManager::ShouldLog(nxLogLevel::Info)) {
        Event latest;
        _order->_GetLastTimes(latest.updateTime, latest.exchangeFillTime);
        _LogTime(latest.updateTime);
    }
    _SetClocks();
}

// What setting a time stamp logs, where none is set yet.
void nxAlgoOrderUpdateObject::_LogTime(const nxTimeStamp& time) const
{
    if (nxLogManager::ShouldLog(nxLogLevel::Info)) nxAlgoTimeStamp(GetJob()).SetTimeStamp(time);
}

const nxOrderTransaction* nxAlgoOrderUpdateObject::_GetTransaction() const
{
    if (_event != nullptr && _event->transaction != nullptr) return _event->transaction;
    return _order == nullptr ? nullptr : _order->_GetLastTransaction();
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
    if (_event == nullptr || _event->clocks == nullptr) return;
    if (_event->isLatest) {
        _event->exchangeFillTime = {};
        _order->_GetLastTimes(_event->updateTime, _event->exchangeFillTime);
    }
    _event->clocks->vorantUpdate = nxAlgoTimeStamp(GetJob(), _event->updateTime);
    _event->clocks->exchangeFill.SetDateTime(_event->exchangeFillTime);
}

bool nxAlgoOrderUpdateObject::_GiveClock(nxLuaResults& results, nxAlgoTimeStamp Clocks::*clock)
{
    std::unique_ptr<Clocks>& clocks = _GetEvent().clocks;
    if (clocks == nullptr) {
        clocks.reset(new Clocks{nxAlgoTimeStamp(GetJob()), nxAlgoTimeStamp(GetJob())});
        _SetClocks();
    }
    nxAlgoTimeStamp& time = (*clocks).*clock;
    if (time.IsValid()) {
        results.AddMember<nxAlgoClockObject>(&time);
    } else {
        results.AddNull();
    }
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
