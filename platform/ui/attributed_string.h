#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/object.h"
#include "platform/foundation/value.h"

namespace plat {

// Attribute names, with the values Foundation gives them.
inline constexpr const char* NSFontAttributeName = "NSFont";
inline constexpr const char* NSParagraphStyleAttributeName = "NSParagraphStyle";
inline constexpr const char* NSKernAttributeName = "NSKern";

// NSMutableAttributedString: a string and its attribute runs. Locations and lengths count
// UTF-16 units, as NSString does. Runs are kept coalesced: neighbours never carry equal
// attributes, so the run list is what attributesAtIndex:effectiveRange: would walk.
class AttributedString : public Object {
  public:
    // NSRange.
    struct Range {
        std::size_t location = 0;
        std::size_t length = 0;
        friend bool operator==(const Range&, const Range&) = default;
    };
    struct Run {
        Range range;
        Dictionary attributes;
    };

    // initWithString:attributes:
    AttributedString(std::string text, Dictionary attributes = {});
    static std::shared_ptr<AttributedString> make(std::string text, Dictionary attributes = {}) {
        return std::make_shared<AttributedString>(std::move(text), std::move(attributes));
    }

    const std::string& string() const { return text_; }
    std::size_t length() const { return length_; }

    // addAttributes:range: — given attributes replace those of the same name inside the range;
    // a nil value is skipped. Raises RangeError when the range reaches past the end.
    void addAttributes(const Dictionary& attributes, Range range);
    // addAttribute:value:range:
    void addAttribute(const std::string& name, Value value, Range range);
    // attributesAtIndex:effectiveRange: — raises RangeError at or past the end.
    Dictionary attributesAtIndex(std::size_t index, Range* effectiveRange = nullptr) const;
    const std::vector<Run>& runs() const { return runs_; }

    std::string className() const override { return "NSConcreteMutableAttributedString"; }
    std::vector<std::string> classChain() const override {
        return {"NSConcreteMutableAttributedString", "NSMutableAttributedString",
                "NSAttributedString", "NSObject"};
    }
    // As Foundation prints it: each run's text followed by its attributes in braces.
    std::string description() const override;

  private:
    // Splits the run containing `at` so that a run starts there; answers that run's index.
    std::size_t splitAt(std::size_t at);
    void coalesce();

    std::string text_;
    std::size_t length_;
    std::vector<Run> runs_;
};

using AttributedStringPtr = std::shared_ptr<AttributedString>;

// Whether two attribute values are equal as -isEqual: judges them: fonts and paragraph styles
// by value, everything else as Value equality does.
bool attributeValuesEqual(const Value& a, const Value& b);

}  // namespace plat
