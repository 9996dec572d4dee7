#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace velto::app {

// Why a request is turned away, before anything reads the session or the device.
struct Refusal {
    int status;
    std::string reason;
};

// The server's front door. It answers only at its own address: a page of another site that
// renames itself to 127.0.0.1 (DNS rebinding) still sends its own name as Host. It lets only its
// own page change anything: a browser sends the page's origin with every POST, so a form or a
// script of another site posting here is refused. Bodies are bounded before they are read.
class RequestGuard {
  public:
    explicit RequestGuard(int port);

    // "http://127.0.0.1:PORT": the server's origin, and its URL without the last slash.
    const std::string& origin() const { return origin_; }

    // `host` and `origin` are the request's headers, nullopt when absent; `length` its
    // Content-Length, nullopt when it has none.
    std::optional<Refusal> refuse(const std::string& method, const std::string& path,
                                  const std::optional<std::string>& host,
                                  const std::optional<std::string>& origin,
                                  std::optional<std::size_t> length) const;

    // The most a request's body may hold at `path`: a picture for the photo picker, a little
    // JSON for the rest.
    static std::size_t bodyLimit(const std::string& path);

  private:
    std::string host_;
    std::string origin_;
};

}  // namespace velto::app
