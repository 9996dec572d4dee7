#include "app/serve/request_guard.h"

#include "app/session/step_runner.h"

namespace velto::app {

namespace {

// Far more than any list of steps a person or a script sends at once.
constexpr std::size_t kJsonBodyLimit = 64 * 1024;
// A multipart upload wraps the picture in a few headers and boundaries.
constexpr std::size_t kUploadOverhead = 64 * 1024;

}  // namespace

RequestGuard::RequestGuard(int port)
    : host_("127.0.0.1:" + std::to_string(port)), origin_("http://" + host_) {}

std::size_t RequestGuard::bodyLimit(const std::string& path) {
    return path == "/api/pick" ? kPickLimit + kUploadOverhead : kJsonBodyLimit;
}

std::optional<Refusal> RequestGuard::refuse(const std::string& method, const std::string& path,
                                            const std::optional<std::string>& host,
                                            const std::optional<std::string>& origin,
                                            std::optional<std::size_t> length) const {
    if (host != host_)
        return Refusal{421, "this server answers only as " + host_ + "; open " + origin_ + "/"};
    if (method == "GET" || method == "HEAD") return std::nullopt;
    if (origin != origin_)
        return Refusal{403, "a request that changes anything must come from " + origin_ +
                                " (send Origin: " + origin_ + ")"};
    if (length && *length > bodyLimit(path))
        return Refusal{413, "the body is larger than " + std::to_string(bodyLimit(path)) +
                                " bytes, the most " + path + " takes"};
    return std::nullopt;
}

}  // namespace velto::app
