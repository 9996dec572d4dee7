#include "platform/ui/attributed_string.h"

#include "platform/foundation/errors.h"
#include "platform/foundation/strings.h"
#include "platform/ui/font.h"
#include "platform/ui/paragraph_style.h"

namespace plat {

namespace {

bool sameAttributes(const Dictionary& a, const Dictionary& b) {
    if (a.size() != b.size()) return false;
    for (auto ia = a.begin(), ib = b.begin(); ia != a.end(); ++ia, ++ib) {
        if (ia->first != ib->first || !attributeValuesEqual(ia->second, ib->second)) return false;
    }
    return true;
}

// The byte offset of a UTF-16 offset, for cutting the text into runs when printing.
std::size_t byteOffset(const std::string& text, std::size_t utf16Offset) {
    std::size_t bytes = 0, units = 0;
    while (bytes < text.size() && units < utf16Offset) {
        const auto lead = static_cast<unsigned char>(text[bytes]);
        const std::size_t width = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc0 ? 2 : 1;
        units += width == 4 ? 2 : 1;
        bytes += width;
    }
    return std::min(bytes, text.size());
}

}  // namespace

bool attributeValuesEqual(const Value& a, const Value& b) {
    if (a.isObject() && b.isObject()) {
        if (auto fa = a.as<Font>(), fb = b.as<Font>(); fa && fb) return *fa == *fb;
        if (auto pa = a.as<ParagraphStyle>(), pb = b.as<ParagraphStyle>(); pa && pb)
            return *pa == *pb;
    }
    return a == b;
}

AttributedString::AttributedString(std::string text, Dictionary attributes)
    : text_(std::move(text)), length_(utf16Length(text_)) {
    std::erase_if(attributes, [](const auto& entry) { return entry.second.isNil(); });
    if (length_ > 0) runs_.push_back({{0, length_}, std::move(attributes)});
}

std::size_t AttributedString::splitAt(std::size_t at) {
    for (std::size_t i = 0; i < runs_.size(); ++i) {
        const Range range = runs_[i].range;
        if (range.location == at) return i;
        if (at < range.location + range.length) {
            Run tail{{at, range.location + range.length - at}, runs_[i].attributes};
            runs_[i].range.length = at - range.location;
            runs_.insert(runs_.begin() + static_cast<std::ptrdiff_t>(i) + 1, std::move(tail));
            return i + 1;
        }
    }
    return runs_.size();
}

void AttributedString::coalesce() {
    std::vector<Run> merged;
    for (Run& run : runs_) {
        if (!merged.empty() && sameAttributes(merged.back().attributes, run.attributes))
            merged.back().range.length += run.range.length;
        else
            merged.push_back(std::move(run));
    }
    runs_ = std::move(merged);
}

void AttributedString::addAttributes(const Dictionary& attributes, Range range) {
    if (range.location > length_ || range.length > length_ - range.location)
        throw RangeError(
            "NSMutableRLEArray replaceObjectsInRange:withObject:length:: Out of bounds");
    if (range.length == 0) return;
    const std::size_t first = splitAt(range.location);
    const std::size_t end = splitAt(range.location + range.length);
    for (std::size_t i = first; i < end; ++i) {
        for (const auto& [name, value] : attributes) {
            if (!value.isNil()) runs_[i].attributes[name] = value;
        }
    }
    coalesce();
}

void AttributedString::addAttribute(const std::string& name, Value value, Range range) {
    addAttributes(Dictionary{{name, std::move(value)}}, range);
}

Dictionary AttributedString::attributesAtIndex(std::size_t index, Range* effectiveRange) const {
    for (const Run& run : runs_) {
        if (index < run.range.location + run.range.length) {
            if (effectiveRange) *effectiveRange = run.range;
            return run.attributes;
        }
    }
    throw RangeError("NSMutableRLEArray objectAtIndex:effectiveRange:: Out of bounds");
}

std::string AttributedString::description() const {
    std::string out;
    for (const Run& run : runs_) {
        const std::size_t from = byteOffset(text_, run.range.location);
        const std::size_t to = byteOffset(text_, run.range.location + run.range.length);
        out += text_.substr(from, to - from) + "{\n";
        for (const auto& [name, value] : run.attributes)
            out += "    " + name + " = \"" + value.description() + "\";\n";
        out += "}";
    }
    return out;
}

}  // namespace plat
