#pragma once

#include "base/records/nxOrderTransaction.h"
#include "scriptFramework/analytics/nxAlgoTimeStamp.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxAlgoOrderObject;

// What has just happened to an order: the argument of most order callbacks, read partly from the order and
// partly from the transaction's record. The host builds it for one event; order and record are its own and
// must live as long as a script may read the update. Takes no lock.
//
// The record may be null, except where a script reads `fillPrice` or `fillVolume`; the order may be null only
// for `id` and `order`.
class nxAlgoOrderUpdateObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoOrderUpdateObject";
    static const nxLuaWrapper<nxAlgoOrderUpdateObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoOrderUpdateObject>::PropertyType Properties[];

    // time: when the host learned of the event.
    nxAlgoOrderUpdateObject(nxAlgoJobInterface* job, const nxAlgoOrderObject* order,
                            const nxOrderTransaction* transaction, const nxTimeStamp& time);

    void SetExchangeFillTime(const nxDateTime& time) { _exchangeFillTime.SetDateTime(time); }

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
    // The order after the event as the record has it, or null.
    const nxOrder* _GetRecord() const { return _transaction == nullptr ? nullptr : _transaction->GetOrder(); }

    const nxOrderTransaction* _transaction;
    const nxAlgoOrderObject* _order;
    nxAlgoTimeStamp _exchangeFillTime;
    nxAlgoTimeStamp _vorantUpdateTime;
};
