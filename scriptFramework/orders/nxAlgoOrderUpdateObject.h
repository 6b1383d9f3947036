#pragma once

#include <memory>

#include "base/records/nxOrderTransaction.h"
#include "scriptFramework/analytics/nxAlgoTimeStamp.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxAlgoOrderObject;

// What has just happened to an order: the argument of most order callbacks, read partly from the order and
// partly from the transaction's record. The host builds it for one event, or keeps one with its order, which
// then shows the order's latest event. Order and record are the host's own and must live as long as a script
// may read the update. Takes no lock.
//
// The record may be null, except where a script reads `fillPrice` or `fillVolume`; the order may be null only
// for `id` and `order`. Without a record of its own an update shows the one that its order gives, if it gives
// one.
class nxAlgoOrderUpdateObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoOrderUpdateObject";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxAlgoOrderUpdateObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoOrderUpdateObject>::PropertyType Properties[];

    // time: when the host learned of the event.
    nxAlgoOrderUpdateObject(nxAlgoJobInterface* job, const nxAlgoOrderObject* order,
                            const nxOrderTransaction* transaction, const nxTimeStamp& time);

    // Shows the latest event of its order, which tells of it (_GetLastTransaction, _GetLastTimes). Small: a
    // run keeps one for each order.
    nxAlgoOrderUpdateObject(nxAlgoJobInterface* job, const nxAlgoOrderObject* order);

    nxAlgoOrderUpdateObject(const nxAlgoOrderUpdateObject& other);
    // Clocks that scripts have show the new times.
    nxAlgoOrderUpdateObject& operator=(const nxAlgoOrderUpdateObject& other);
    ~nxAlgoOrderUpdateObject() override;

    // Of an update for one event.
    void SetExchangeFillTime(const nxDateTime& time);
    // The order has had another event: clocks that scripts have show its times.
    void Renew();

    bool isSpreadUnbalanced(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults&);
    bool Get_side(nxLuaResults&);
    bool Get_reference(nxLuaResults&);
    bool Get_working(nxLuaResults&);
    bool Get_volume(nxLuaResults&);
    bool Get_price(nxLuaResults&);
    bool Get_executed(nxLuaResults&);
    bool Get_fillPrice(nxLuaResults&);
    bool Get_fillVolume(nxLuaResults&);
    bool Get_order(nxLuaResults&);
    bool Get_error(nxLuaResults&);
    bool Get_vorantUpdateTime(nxLuaResults&);
    bool Get_exchangeFillTime(nxLuaResults&);

private:
    // What scripts see of the times, made when one asks: clocks are large.
    struct Clocks;
    // The one event, or the clocks of the latest one.
    struct Event;

    Event& _GetEvent();
    void _LogTime(const nxTimeStamp& time) const;
    const nxOrderTransaction* _GetTransaction() const;
    // The order after the event as the record has it, or null.
    const nxOrder* _GetRecord() const;
    bool _GiveClock(nxLuaResults& results, nxAlgoTimeStamp Clocks::*clock);
    void _SetClocks();

    const nxAlgoOrderObject* _order;
    std::unique_ptr<Event> _event;  // null of the latest one until a script asks for a clock
};
