// How the venue's answers reach the accounts and the scripts.

#include <fmt/format.h>

#include <algorithm>

#include "host/run/nxTrading.h"

namespace {

using Kind = nxExchangeEvent::Kind;
using UpdateEntry = nxErrorEnum (nxAlgoJobObject::*)(nxAlgoOrderUpdateObject&);

// What a script hears of an order, by event. A fill and a child have more to them.
constexpr struct
{
    Kind kind;
    nxCallback callback;
    UpdateEntry entry;
} AnswerEntries[] = {
    {Kind::Accepted, nxCallback::OnOrderWorking, &nxAlgoJobObject::OnOrderWorking},
    {Kind::Triggered, nxCallback::OnOrderWorking, &nxAlgoJobObject::OnOrderWorking},
    {Kind::Amended, nxCallback::OnOrderWorking, &nxAlgoJobObject::OnOrderWorking},
    {Kind::Filled, nxCallback::OnOrderFill, &nxAlgoJobObject::OnOrderFill},
    {Kind::Cancelled, nxCallback::OnOrderCancelled, &nxAlgoJobObject::OnOrderCancelled},
    {Kind::Rejected, nxCallback::OnOrderRejected, &nxAlgoJobObject::OnOrderRejected},
    {Kind::AmendRejected, nxCallback::OnOrderAmendRejected, &nxAlgoJobObject::OnOrderAmendRejected},
    {Kind::CancelRejected, nxCallback::OnOrderCancelRejected, &nxAlgoJobObject::OnOrderCancelRejected},
};

const char* GetRefused(Kind kind)
{
    return kind == Kind::Rejected        ? "is rejected: "
           : kind == Kind::AmendRejected ? "is not amended: "
                                         : "is not pulled: ";
}

}  // namespace

bool nxTrading::IsAnswerDue()
{
    if (_venue == nullptr) return false;
    if (_answer) return true;
    if (_isAmongBars) {
        _venue->AdvanceAmongBars(_clock.Get());
    } else {
        _venue->Advance(_clock.Get());
    }
    _ledger.Settle();
    if (_venue->IsEventDue(_clock.Get()) && _venue->PopEvent(_answer.emplace(), _clock.Get())) return true;
    _answer.reset();
    _Reschedule();
    return false;
}

nxHostOrder& nxTrading::_ApplyAnswer(const nxExchangeEvent& event)
{
    if (event.kind == Kind::ChildCreated) {
        const nxExchangeOrder& child = *_venue->FindOrder(event.order);
        nxHostOrder& parent = *FindOrder(child.parent);
        parent.GetOwner().AddChild(child, parent);
    }
    nxHostOrder& order = *FindOrder(event.order);
    if (event.kind == Kind::Filled) _AddFill(order, event);  // first: the order records its fee
    order.Apply(event);
    if (event.kind == Kind::Cancelled || event.kind == Kind::Rejected) _NoteEnd(event);
    return order;
}

void nxTrading::_NoteEnd(const nxExchangeEvent& event)
{
    if (event.executed != 0) return;
    if (event.owner >= _ends.size()) _ends.resize(event.owner + 1);
    Ends& ends = _ends[event.owner];
    constexpr std::size_t mostKept = 100;  // reasons may name prices
    const std::string& reason = event.reason.empty() ? "pulled by the script" : event.reason;
    if (ends.size() < mostKept || ends.contains(reason)) ++ends[reason];
}

std::pair<std::string, unsigned long long> nxTrading::GetCommonestEnd(const nxTradingJob& job) const
{
    const auto& orders = job.GetOwnOrders();
    std::pair<std::string, unsigned long long> commonest(
        "still in the market at the end",
        std::ranges::count_if(orders, [](const nxHostOrder& order) { return order.GetTicket().IsOpen(); }));
    if (job.GetIndex() < _ends.size())
        for (const auto& [reason, count] : _ends[job.GetIndex()])
            if (count > commonest.second) commonest = {reason, count};
    return commonest;
}

void nxTrading::DeliverAnswer()
{
    const nxExchangeEvent event = std::move(*_answer);
    _answer.reset();
    nxHostOrder& order = _ApplyAnswer(event);
    nxTradingJob& job = order.GetOwner();
    nxJobRunner& runner = _jobs.Get(job);
    if (runner.IsOver()) _Flatten(job);
    // What ends by its own terms is no mistake of the script.
    if (!event.error.IsSuccess() && event.kind != Kind::Cancelled) {
        job.SetError(event.reason);
        _output.LogText(job, fmt::format("order {} {}{}", event.order, GetRefused(event.kind), event.reason));
    }
    if (!_chains.Begin(event.order, job.GetIndex(), _clock.Get()) && !runner.IsOver()) {
        _jobs.NoteFailure(
            runner, nxCallback::OnOrderWorking,
            fmt::format("orders are sent upon the answers to orders without end at one recorded "
                        "time: {} in a row or {} in all",
                        nxAnswerChains::MostInRow, nxAnswerChains::MostInAll));
        runner.AskEnd("its orders had no end");
    } else {
        _TellAnswer(order, event);
    }
    _chains.End();
}

void nxTrading::_TellAnswer(nxHostOrder& order, const nxExchangeEvent& event)
{
    nxJobRunner& runner = _jobs.Get(order.GetOwner());
    const auto tell = [&](nxCallback callback, UpdateEntry entry) {
        if (!runner.IsOver() && runner.Defines(callback))
            _jobs.Call(callback, runner, entry, order.GetUpdate());
    };
    if (event.kind == Kind::ChildCreated) {
        _jobs.Deliver(nxCallback::OnOrderNew, runner, &nxAlgoJobObject::OnOrderNew, order);
    } else if (event.kind == Kind::QueueMoved) {
        _jobs.Deliver(nxCallback::OnOrderQPosition, runner, &nxAlgoJobObject::OnOrderQPosition, order);
    } else {
        const auto known = std::ranges::find_if(
            AnswerEntries, [&](const auto& candidate) { return candidate.kind == event.kind; });
        tell(known->callback, known->entry);
    }
    if (event.kind == Kind::Filled && event.status == nxOrderStatus_Filled)
        tell(nxCallback::OnOrderCompleted, &nxAlgoJobObject::OnOrderCompleted);
}

void nxTrading::_TakeLastAnswers()
{
    if (_answer) _ApplyAnswer(*std::exchange(_answer, std::nullopt));
    nxExchangeEvent event;
    while (_venue->PopEvent(event, nxTime::Never))
        _ApplyAnswer(event);
}
