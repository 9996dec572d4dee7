#pragma once

#include <memory>
#include <string>

#include "platform/foundation/object.h"

namespace plat {

// NSTextAlignment.
enum TextAlignment : int {
    NSTextAlignmentLeft = 0,
    NSTextAlignmentCenter = 1,
    NSTextAlignmentRight = 2,
    NSTextAlignmentJustified = 3,
    NSTextAlignmentNatural = 4,
};

// NSMutableParagraphStyle with the properties text in the bundle sets; the rest keep their
// defaults. Equal when every property is equal, as -isEqual: answers.
class ParagraphStyle : public Object {
  public:
    static std::shared_ptr<ParagraphStyle> make() { return std::make_shared<ParagraphStyle>(); }

    double lineSpacing() const { return lineSpacing_; }
    void setLineSpacing(double spacing) { lineSpacing_ = spacing; }
    int alignment() const { return alignment_; }
    void setAlignment(int alignment) { alignment_ = alignment; }

    std::string className() const override { return "NSMutableParagraphStyle"; }
    std::vector<std::string> classChain() const override {
        return {"NSMutableParagraphStyle", "NSParagraphStyle", "NSObject"};
    }
    std::string description() const override {
        return "Alignment " + std::to_string(alignment_) + ", LineSpacing " +
               std::to_string(lineSpacing_);
    }
    friend bool operator==(const ParagraphStyle& a, const ParagraphStyle& b) {
        return a.lineSpacing_ == b.lineSpacing_ && a.alignment_ == b.alignment_;
    }

  private:
    double lineSpacing_ = 0;
    int alignment_ = NSTextAlignmentNatural;
};

using ParagraphStylePtr = std::shared_ptr<ParagraphStyle>;

}  // namespace plat
