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

// A piece read is converted as a decoder that repairs does: a character the 1023-byte read
// cut in two, or any byte that is not UTF-8, becomes U+FFFD, and everything else of the piece
// stays. Dropping the whole piece would lose the version around the cut.
std::string convertedPiece(const std::string& piece) {
    if (plat::isValidUTF8(piece)) return piece;
    static const std::string kReplacement = "\xEF\xBF\xBD";
    std::string text;
    for (std::size_t at = 0; at < piece.size();) {
        const auto lead = static_cast<unsigned char>(piece[at]);
        const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (at + length <= piece.size() &&
            plat::isValidUTF8(std::string_view(piece).substr(at, length))) {
            text.append(piece, at, length);
            at += length;
            continue;
        }
        text += kReplacement;
        // A cut sequence is one character's worth: its lead and the continuations that follow.
        std::size_t skip = 1;
        while (lead >= 0xC0 && skip < length && at + skip < piece.size() &&
               (static_cast<unsigned char>(piece[at + skip]) & 0xC0) == 0x80)
            ++skip;
        at += skip;
    }
    return text;
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
    while (pipe->fgets(buffer, sizeof buffer))
        output += convertedPiece(buffer);
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
