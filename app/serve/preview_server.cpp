#include "app/serve/preview_server.h"

#include <httplib.h>

#include "app/exit_status.h"
#include "app/render/json_output.h"
#include "app/serve/request_guard.h"
#include "app/serve/web_asset.h"

namespace velto::app {

using json = nlohmann::ordered_json;

namespace {

// A stream's quiet spells end in a comment line, so that a gone browser is noticed and a
// proxy or a browser does not take the silence for a dead server.
constexpr std::chrono::seconds kStreamKeepAlive{15};
// Enough for the streams EventHub allows, the page's own requests and a script or two.
constexpr std::size_t kServerThreads = 16;

void reply(httplib::Response& res, const json& body, int status = 200) {
    res.status = status;
    res.set_content(jsonText(body), "application/json");
}

void replyError(httplib::Response& res, int status, const std::string& message) {
    reply(res, {{"error", message}}, status);
}

json answerJson(const SessionAnswer& answer, bool withStep = false) {
    json out = {{"status", answer.status}};
    if (withStep) out["step"] = answer.step ? json(*answer.step) : json(nullptr);
    out["records"] = answer.records;
    return out;
}

// The request's JSON object, or nullopt with the answer already given.
std::optional<nlohmann::json> bodyObject(const httplib::Request& req, httplib::Response& res) {
    // A chunked body has no length to refuse it by before it is read.
    if (req.body.size() > RequestGuard::bodyLimit(req.path)) {
        replyError(res, 413, "the body is too large");
        return std::nullopt;
    }
    auto body = nlohmann::json::parse(req.body, nullptr, false);
    if (body.is_discarded() || !body.is_object()) {
        replyError(res, 400, "the body must be a JSON object");
        return std::nullopt;
    }
    return body;
}

std::optional<std::string> header(const httplib::Request& req, const char* name) {
    if (!req.has_header(name)) return std::nullopt;
    return req.get_header_value(name);
}

std::optional<std::size_t> contentLength(const httplib::Request& req) {
    const auto text = header(req, "Content-Length");
    if (!text) return std::nullopt;
    try {
        return static_cast<std::size_t>(std::stoull(*text));
    } catch (const std::logic_error&) {
        return std::numeric_limits<std::size_t>::max();
    }
}

std::optional<std::uint64_t> lastEventId(const httplib::Request& req) {
    const auto text = header(req, "Last-Event-ID");
    if (!text) return std::nullopt;
    try {
        return std::stoull(*text);
    } catch (const std::logic_error&) {
        return std::nullopt;
    }
}

}  // namespace

PreviewServer::PreviewServer(PreviewSession& session, EventHub& hub)
    : session_(session), hub_(hub), server_(std::make_unique<httplib::Server>()) {}

PreviewServer::~PreviewServer() {
    stop();
}

std::string PreviewServer::url() const {
    return "http://127.0.0.1:" + std::to_string(port_) + "/";
}

int PreviewServer::start(int port) {
    // The library's own options add SO_REUSEPORT, with which a second server would share the
    // port and take half of the requests meant for this one: a port in use must be refused.
    server_->set_socket_options([](socket_t sock) {
        const int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    port_ = port == 0 ? server_->bind_to_any_port("127.0.0.1")
                      : (server_->bind_to_port("127.0.0.1", port) ? port : -1);
    if (port_ < 0) return -1;
    route();
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    return port_;
}

void PreviewServer::stop() {
    hub_.close();
    if (server_) server_->stop();
    if (thread_.joinable()) thread_.join();
}

void PreviewServer::route() {
    httplib::Server& server = *server_;
    server.new_task_queue = [] { return new httplib::ThreadPool(kServerThreads); };
    server.set_payload_max_length(RequestGuard::bodyLimit("/api/pick"));
    server.set_default_headers({{"Cache-Control", "no-store"},
                                {"X-Content-Type-Options", "nosniff"},
                                {"Referrer-Policy", "no-referrer"},
                                {"Content-Security-Policy",
                                 "default-src 'self'; img-src 'self' blob:; "
                                 "frame-ancestors 'none'; form-action 'none'"}});

    server.set_pre_routing_handler(
        [guard = RequestGuard(port_)](const httplib::Request& req, httplib::Response& res) {
            const auto refusal = guard.refuse(req.method, req.path, header(req, "Host"),
                                              header(req, "Origin"), contentLength(req));
            if (!refusal) return httplib::Server::HandlerResponse::Unhandled;
            replyError(res, refusal->status, refusal->reason);
            return httplib::Server::HandlerResponse::Handled;
        });
    server.set_exception_handler(
        [](const httplib::Request&, httplib::Response& res, std::exception_ptr thrown) {
            try {
                std::rethrow_exception(thrown);
            } catch (const std::exception& e) {
                replyError(res, 500, e.what());
            } catch (...) {
                replyError(res, 500, "the server failed");
            }
        });

    server.Get("/api/page", [this](const httplib::Request&, httplib::Response& res) {
        reply(res, session_.page());
    });
    server.Get("/api/screenshot.png", [this](const httplib::Request&, httplib::Response& res) {
        const plat::Bytes png = session_.screenshot();
        if (png.empty()) return replyError(res, 500, "the page cannot be drawn");
        res.set_content(std::string(png.begin(), png.end()), "image/png");
    });
    server.Get("/api/devices", [this](const httplib::Request&, httplib::Response& res) {
        reply(res, session_.devices());
    });
    server.Get("/api/events", [this](const httplib::Request& req, httplib::Response& res) {
        if (!hub_.join()) return replyError(res, 503, "too many event streams are open");
        auto cursor = std::make_shared<std::uint64_t>(hub_.startFor(lastEventId(req)));
        res.set_chunked_content_provider(
            "text/event-stream",
            [this, cursor](std::size_t, httplib::DataSink& sink) {
                const auto text = hub_.next(*cursor, kStreamKeepAlive);
                if (!text) {
                    sink.done();
                    return true;
                }
                const std::string out = text->empty() ? ": still here\n\n" : *text;
                return sink.write(out.data(), out.size());
            },
            [this](bool) { hub_.leave(); });
    });

    server.Post("/api/steps", [this](const httplib::Request& req, httplib::Response& res) {
        const auto body = bodyObject(req, res);
        if (!body) return;
        const auto steps = body->find("steps");
        if (steps == body->end() || !steps->is_array())
            return replyError(res, 400, "the body must be {\"steps\": [\"STEP\", ...]}");
        std::vector<std::string> texts;
        for (const auto& step : *steps) {
            if (!step.is_string()) return replyError(res, 400, "every step must be a string");
            texts.push_back(step.get<std::string>());
        }
        const SessionAnswer answer = session_.runSteps(texts);
        reply(res, answerJson(answer), answer.status == kExitUsage ? 400 : 200);
    });
    server.Post("/api/tap", [this](const httplib::Request& req, httplib::Response& res) {
        const auto body = bodyObject(req, res);
        if (!body) return;
        const auto x = body->find("x"), y = body->find("y");
        if (x == body->end() || y == body->end() || !x->is_number() || !y->is_number())
            return replyError(res, 400, "the body must be {\"x\": POINTS, \"y\": POINTS}");
        reply(res, answerJson(session_.tap(x->get<double>(), y->get<double>()), true));
    });
    server.Post("/api/pick", [this](const httplib::Request& req, httplib::Response& res) {
        if (!req.is_multipart_form_data() || !req.has_file("picture"))
            return replyError(res, 400,
                              "send the picture as multipart/form-data, in a field 'picture'");
        const bool originalOnly =
            req.has_file("original-only") && req.get_file_value("original-only").content == "true";
        reply(res, answerJson(session_.pick(req.get_file_value("picture").content, originalOnly)));
    });
    server.Post("/api/device", [this](const httplib::Request& req, httplib::Response& res) {
        const auto body = bodyObject(req, res);
        if (!body) return;
        const auto device = body->find("device");
        if (device == body->end() || !device->is_number_unsigned())
            return replyError(res, 400, "the body must be {\"device\": INDEX}");
        const SessionAnswer answer = session_.selectDevice(device->get<std::size_t>());
        reply(res, answerJson(answer), answer.status == kExitUsage ? 404 : 200);
    });

    // The page's own files, by their exact names: nothing else is served.
    server.Get(R"(/.*)", [](const httplib::Request& req, httplib::Response& res) {
        const WebAsset* asset = findWebAsset(req.path);
        if (!asset) return replyError(res, 404, "no " + req.path + " here");
        res.set_content(std::string(asset->bytes), std::string(asset->type));
    });
}

}  // namespace velto::app
