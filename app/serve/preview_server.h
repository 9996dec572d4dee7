#pragma once

#include <memory>
#include <string>
#include <thread>

#include "app/serve/event_hub.h"
#include "app/serve/preview_session.h"

namespace httplib {
class Server;
}

namespace velto::app {

// The HTTP side of `serve` (docs/serve.md): the preview page and its interface, on the loopback
// address only, each request past the RequestGuard before it reaches the session.
class PreviewServer {
  public:
    PreviewServer(PreviewSession& session, EventHub& hub);
    ~PreviewServer();
    PreviewServer(const PreviewServer&) = delete;
    PreviewServer& operator=(const PreviewServer&) = delete;

    // Listens on 127.0.0.1:port (0: a free port) and serves on threads of its own. Answers the
    // port, or -1 when it cannot listen there.
    int start(int port);
    // Ends the streams and the server, and waits for its threads.
    void stop();

    // "http://127.0.0.1:PORT/".
    std::string url() const;

  private:
    void route();

    PreviewSession& session_;
    EventHub& hub_;
    std::unique_ptr<httplib::Server> server_;
    std::thread thread_;
    int port_ = -1;
};

}  // namespace velto::app
