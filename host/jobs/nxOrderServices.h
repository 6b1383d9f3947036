#pragma once

#include <vector>

class nxLaunchedJob;
class nxHostOrder;
class nxHostProduct;
class nxVenue;

// What a job needs to trade. Calls come on the run's thread, from inside a callback.
class nxOrderServices
{
public:
    // From the first order on there is a venue; null before.
    virtual nxVenue* GetVenue() = 0;
    // The number of a new order; makes the venue.
    virtual unsigned int ReserveOrder() = 0;
    // The venue's number of the product.
    virtual unsigned int GetVenueProduct(const nxHostProduct& product) const = 0;
    // The order exists; to be called once, under its number.
    virtual void NoteOrder(nxHostOrder& order) = 0;
    // Null for a number that no job knows of.
    virtual nxHostOrder* FindOrder(unsigned int id) = 0;
    // Of all jobs, in the order in which they came to be.
    virtual const std::vector<nxHostOrder*>& GetOrders() const = 0;
    // A request for the order was sent to the venue, to be carried out when the callback has returned.
    virtual void NoteRequest(const nxHostOrder& order) = 0;
    // False for a job that has ended.
    virtual bool MayTrade(const nxLaunchedJob& job) const = 0;

protected:
    ~nxOrderServices() = default;
};
