#include "about/version_lookup.h"

#include <memory>
#include <vector>

#include "contract/catalogue.h"
#include "contract/nv_utils.h"
#include "platform/foundation/format.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/foundation/strings.h"
#include "platform/system/process.h"

namespace velto {

namespace {

constexpr plat::SlotKey<plat::Value> kProductInfoSlot{"productInfoDict"};

// Quotes a shell argument. The quote "escaping" is a regular-expression template in which the
// backslash escapes the quote right back to itself, so the text comes out unchanged; none of
// the arguments this is used for holds a quote.
std::string quoted(const std::string& argument) {
    return plat::stringWithFormat(
        "'%@'", {plat::stringByReplacingOccurrences(argument, "'", "\\'",
                                                    plat::NSRegularExpressionSearch)});
}

}  // namespace

std::optional<std::string> packageVersion(const std::string& packageIdentifier) {
    const std::string format = plat::stringWithFormat("${%@}", {"Version"});
    const std::vector<std::string> arguments{"/usr/bin/dpkg-query", "-Wf", format,
                                             packageIdentifier};
    std::string command;
    for (const std::string& argument : arguments)
        command += (command.empty() ? "" : " ") + quoted(argument);

    auto pipe = plat::Process::current().shell().popen(command, "r");
    if (!pipe) return std::nullopt;
    std::string output;
    char buffer[1024];
    while (pipe->fgets(buffer, sizeof buffer)) {
        const std::string piece(buffer);
        // A piece that is not UTF-8 converts to nothing and adds nothing.
        if (plat::isValidUTF8(piece)) output += piece;
    }
    if (pipe->pclose() != 0) return std::nullopt;
    return output;
}

std::optional<std::string> __getProductVersion() {
    if (auto version = packageVersion(kProductPackage)) return version;
    const plat::Value version = __getProductInfoDict().objectForKey("Version");
    if (!version.isString()) return std::nullopt;
    return version.str();
}

plat::Value __getProductInfoDict() {
    auto& slots = plat::Process::current().slots();
    if (auto kept = slots.get(kProductInfoSlot)) return *kept;
    const plat::Value info = productInfoFromSpringBoard();
    if (!info.isNil()) slots.set(kProductInfoSlot, std::make_shared<plat::Value>(info));
    return info;
}

plat::Value productInfoFromSpringBoard() {
    const plat::Value userInfo =
        plat::Value::dictionary({{requests::kMessageID, plat::Value::integer(0)}});
    const plat::Value reply = NVUtils::sendMessageToSpringBoardAndReceiveReplyName(
        requests::kCenterName, requests::kProduct, false, userInfo);
    const plat::Bytes* archive = reply.objectForKey(requests::kMessageData).asData();
    if (!archive) return plat::Value();
    const plat::Value info = plat::unarchiveObjectWithData(*archive);
    return info.isDictionary() ? info : plat::Value();
}

}  // namespace velto
