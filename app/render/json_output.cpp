#include "app/render/json_output.h"

#include <cmath>

#include "app/render/content_hash.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/ui/image.h"

namespace velto::app {

using json = nlohmann::ordered_json;

namespace {

json optional(const std::optional<std::string>& text) {
    return text ? json(*text) : json(nullptr);
}

json pictureJson(const RowView::Icon& picture) {
    return {{"width", picture.width},
            {"height", picture.height},
            {"hash", picture.image ? json(pictureHash(*picture.image)) : json(nullptr)}};
}

// Points to the hundredth: enough to hit a row, short enough to read.
json frameJson(const std::optional<plat::Rect>& frame) {
    if (!frame) return nullptr;
    const auto round = [](double points) { return std::round(points * 100) / 100; };
    return json::array({round(frame->origin.x), round(frame->origin.y), round(frame->size.width),
                        round(frame->size.height)});
}

json rowJson(const RowView& row) {
    json out = {{"index", row.index},
                {"cell", row.cell},
                {"label", optional(row.label)},
                {"text", optional(row.text)},
                {"id", optional(row.id)},
                {"footer", optional(row.footer)},
                {"value", row.value ? json(*row.value) : json(nullptr)},
                {"detail", optional(row.detail)},
                {"action", optional(row.action)},
                {"key", optional(row.key)},
                {"defaults", optional(row.defaults)},
                {"notification", optional(row.notification)},
                {"icon", nullptr},
                {"frame", frameJson(row.frame)}};
    if (row.icon) out["icon"] = pictureJson(*row.icon);
    return out;
}

json presentedJson(const std::optional<PresentedView>& presented) {
    if (!presented) return nullptr;
    json actions = json::array();
    for (const ActionView& action : presented->actions)
        actions.push_back({{"title", action.title}, {"style", action.style}});
    json out = {{"kind", presented->kind},
                {"class", presented->className},
                {"title", optional(presented->title)},
                {"message", optional(presented->message)},
                {"actions", actions},
                {"popover", presented->popover},
                {"anchor", optional(presented->anchor)},
                {"mail", nullptr},
                {"share", nullptr}};
    if (const auto& mail = presented->mail) {
        json attachments = json::array();
        for (const auto& attachment : mail->attachments)
            attachments.push_back({{"name", attachment.name},
                                   {"mime", attachment.mimeType},
                                   {"size", attachment.size}});
        out["mail"] = {{"to", mail->to}, {"subject", mail->subject}, {"attachments", attachments}};
    }
    if (const auto& share = presented->share) {
        out["share"] = {{"text", optional(share->text)}, {"image", nullptr}};
        if (share->image) out["share"]["image"] = pictureJson(*share->image);
    }
    return out;
}

std::string base64(const plat::Bytes& bytes) {
    static const char* alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::uint32_t chunk = (bytes[i] << 16) |
                                    (i + 1 < bytes.size() ? bytes[i + 1] << 8 : 0) |
                                    (i + 2 < bytes.size() ? bytes[i + 2] : 0);
        out += alphabet[(chunk >> 18) & 63];
        out += alphabet[(chunk >> 12) & 63];
        out += i + 1 < bytes.size() ? alphabet[(chunk >> 6) & 63] : '=';
        out += i + 2 < bytes.size() ? alphabet[chunk & 63] : '=';
    }
    return out;
}

}  // namespace

namespace {

json indexJson(const std::optional<std::int64_t>& index) {
    return index ? json(*index) : json(nullptr);
}

// The fields of each kind, after its "kind".
struct JournalFields {
    json& out;
    void operator()(const plat::journal::Notification& e) const { out["name"] = e.name; }
    void operator()(const plat::journal::LocalNotification& e) const { out["name"] = e.name; }
    void operator()(const plat::journal::Log& e) const { out["text"] = e.text; }
    void operator()(const plat::journal::Request& e) const {
        out["name"] = e.name;
        out["center"] = e.center;
        out["replied"] = e.replied();
        out["userInfo"] = summaryJson(e.userInfo);
        out["reply"] = summaryJson(e.reply);
    }
    void operator()(const plat::journal::Shell& e) const { out["command"] = e.command; }
    void operator()(const plat::journal::Insert& e) const {
        out["index"] = indexJson(e.index);
        out["animated"] = e.animated;
        out["page"] = e.page;
        out["row"] = e.rowIdentifier.empty() ? json(nullptr) : json(e.rowIdentifier);
    }
    void operator()(const plat::journal::Remove& e) const {
        out["index"] = e.index;
        out["animated"] = e.animated;
        out["page"] = e.page;
    }
    void operator()(const plat::journal::Reload& e) const {
        out["index"] = indexJson(e.index);
        out["animated"] = e.animated;
        out["page"] = e.page;
    }
    void operator()(const plat::journal::Present& e) const {
        out["class"] = e.controllerClass;
        out["title"] = e.title;
        out["animated"] = e.animated;
    }
    void operator()(const plat::journal::Dismiss& e) const {
        out["class"] = e.controllerClass;
        out["how"] = e.how;
    }
    void operator()(const plat::journal::Navigation& e) const {
        out["class"] = e.controllerClass;
        out["action"] = e.action;
    }
    void operator()(const plat::journal::Synchronize&) const {}
    void operator()(const plat::journal::PreferenceWrite& e) const {
        out["domain"] = e.domain;
        out["key"] = e.key;
        out["value"] = valueJson(e.value);
    }
    void operator()(const plat::journal::PreferenceWriteRefused& e) const {
        out["domain"] = e.domain;
        out["key"] = e.key;
        out["cause"] = e.cause;
    }
};

}  // namespace

json journalJson(const plat::JournalEntry& entry) {
    json out = {{"kind", plat::kindName(entry)}};
    std::visit(JournalFields{out}, entry);
    return out;
}

json pageJson(const PageView& page, const std::vector<plat::JournalEntry>& journal) {
    json rows = json::array();
    for (const RowView& row : page.rows)
        rows.push_back(rowJson(row));
    json entries = json::array();
    for (const auto& entry : journal)
        entries.push_back(journalJson(entry));
    json out = recordLine("page");
    out["page"] = page.className;
    out["title"] = optional(page.title);
    out["depth"] = page.depth;
    out["stack"] = page.stack;
    out["rows"] = rows;
    out["presented"] = presentedJson(page.presented);
    out["journal"] = entries;
    return out;
}

json recordLine(const char* type) {
    return {{"type", type}, {"schema", kJsonSchema}};
}

json recordLine(const char* type, const json& fields) {
    json out = recordLine(type);
    for (const auto& [key, value] : fields.items())
        out[key] = value;
    return out;
}

json errorLine(const std::string& message, const std::string& step, std::size_t line) {
    json out = recordLine("error");
    out["error"] = message;
    out["step"] = step.empty() ? json(nullptr) : json(step);
    out["line"] = line ? json(line) : json(nullptr);
    return out;
}

namespace {

constexpr std::size_t kSummaryItems = 8;
constexpr std::size_t kSummaryText = 200;
constexpr int kSummaryDepth = 8;

json summary(const plat::Value& value, int depth) {
    using Type = plat::Value::Type;
    if (depth > kSummaryDepth) return "…";
    switch (value.type()) {
        case Type::String:
            if (value.str().size() > kSummaryText) return value.str().substr(0, kSummaryText) + "…";
            return value.str();
        case Type::Data: {
            const plat::Value decoded = plat::unarchiveObjectWithData(*value.asData());
            if (!decoded.isNil()) return {{"archived", summary(decoded, depth + 1)}};
            return {{"data", value.asData()->size()}};
        }
        case Type::Array: {
            json items = json::array();
            for (const plat::Value& item : *value.asArray()) {
                if (items.size() == kSummaryItems) break;
                items.push_back(summary(item, depth + 1));
            }
            return {{"count", value.asArray()->size()}, {"items", items}};
        }
        case Type::Dictionary: {
            json out = json::object();
            for (const auto& [key, item] : *value.asDictionary())
                out[key] = summary(item, depth + 1);
            return out;
        }
        case Type::Object:
            if (auto image = value.as<plat::Image>())
                return {{"image", pictureJson({image->pixelWidth(), image->pixelHeight(), image})}};
            return valueJson(value);
        default:
            return valueJson(value);
    }
}

}  // namespace

json summaryJson(const plat::Value& value) {
    return summary(value, 0);
}

json valueJson(const plat::Value& value) {
    using Type = plat::Value::Type;
    switch (value.type()) {
        case Type::Nil:
        case Type::Null:
            return nullptr;
        case Type::Boolean:
            return value.boolValue();
        case Type::Integer:
            if (value.isUnsignedBig()) return value.unsignedValue();
            return value.integerValue();
        case Type::Real:
            return value.doubleValue();
        case Type::String:
            return value.str();
        case Type::Data:
            return {{"data", base64(*value.asData())}};
        case Type::Date:
            return {{"date", *value.asDate()}};
        case Type::Array: {
            json out = json::array();
            for (const plat::Value& item : *value.asArray())
                out.push_back(valueJson(item));
            return out;
        }
        case Type::Dictionary: {
            json out = json::object();
            for (const auto& [key, item] : *value.asDictionary())
                out[key] = valueJson(item);
            return out;
        }
        case Type::Uid:
            return {{"uid", *value.asUid()}};
        case Type::Object:
            return {{"object", value.asObject()->className()}};
    }
    return nullptr;
}

}  // namespace velto::app
