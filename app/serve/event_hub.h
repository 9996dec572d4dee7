#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace velto::app {

// The server's event stream: what the session showed or said, kept for every open stream to
// send at its own pace. A stream never waits on the session, nor the session on a stream: the
// session publishes and goes on; a stream too slow to keep up loses the oldest events.
class EventHub {
  public:
    // Adds an event ("page", "record", "devices") whose data is one line of JSON.
    void publish(const std::string& name, const std::string& data);

    // Where a new stream starts: after the event it last saw (its Last-Event-ID), when that is
    // still kept; otherwise at the latest page, so that it shows something at once.
    std::uint64_t startFor(std::optional<std::uint64_t> lastSeen) const;

    // The events after `cursor` as event-stream text, the cursor moved past them; waits up to
    // `wait` for one to come and answers "" when none did. nullopt once the hub is closed.
    std::optional<std::string> next(std::uint64_t& cursor, std::chrono::milliseconds wait);

    // A stream holds one of the server's threads for its whole life, so there are few.
    bool join();
    void leave();

    // Ends every stream, now and for good.
    void close();

  private:
    struct Event {
        std::uint64_t id;
        std::string name;
        std::string data;
    };
    static constexpr std::size_t kKept = 256;
    static constexpr int kMaxStreams = 4;

    mutable std::mutex mutex_;
    std::condition_variable published_;
    std::deque<Event> events_;
    std::uint64_t lastId_ = 0;
    std::uint64_t lastPage_ = 0;
    int streams_ = 0;
    bool closed_ = false;
};

}  // namespace velto::app
