#pragma once

#include "clock.h"
#include "http_message.h"
#include "storage.h"

#include <mutex>
#include <string>

namespace tarnwick {

// The whole service without the network: takes a request, gives a reply. May be called from any thread.
class Service
{
public:
    // `dataFile` is an SQLite file, or ":memory:". Throws DatabaseError.
    explicit Service(const std::string& dataFile, const Clock& clock = systemClock());

    // Never throws: a fault inside becomes a reply with status 500.
    HttpReply handle(const HttpRequest& request);

    // Waits for the request in hand and lets no other one begin, for a process that is about to end.
    void close();

private:
    HttpReply answer(const HttpRequest& request);

    // One request at a time: each takes far less than a millisecond besides its write to the disk, which
    // SQLite serialises anyway. Reading requests and sending replies happens outside, so a slow client delays
    // nobody.
    std::mutex m_mutex;
    Storage m_storage;
    bool m_closed = false;
};

} // namespace tarnwick
