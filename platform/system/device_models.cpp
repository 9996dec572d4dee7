#include "platform/system/device_models.h"

#include <iterator>

namespace plat {

namespace {

constexpr auto iPhone = DeviceFamily::iPhone;
constexpr auto iPad = DeviceFamily::iPad;
constexpr auto iPod = DeviceFamily::iPod;

// The first model of each family and scale is the one `device init` picks.
// clang-format off
constexpr DeviceModel kModels[] = {
    {"iPhone13,2", iPhone, "iPhone 12",                 390, 844, 3, false, 47, 34},
    {"iPhone12,8", iPhone, "iPhone SE (2nd generation)", 375, 667, 2, true, 20, 0},
    {"iPhone2,1",  iPhone, "iPhone 3GS",                320, 480, 1, true, 20, 0},
    {"iPhone12,1", iPhone, "iPhone 11",                 414, 896, 2, false, 48, 34},
    {"iPhone10,3", iPhone, "iPhone X",                  375, 812, 3, false, 44, 34},
    {"iPhone8,2",  iPhone, "iPhone 6s Plus",            414, 736, 3, true, 20, 0},
    {"iPhone8,1",  iPhone, "iPhone 6s",                 375, 667, 2, true, 20, 0},
    {"iPhone5,1",  iPhone, "iPhone 5",                  320, 568, 2, true, 20, 0},
    {"iPad8,1",    iPad,   "iPad Pro (11-inch)",        834, 1194, 2, false, 24, 20},
    {"iPad2,1",    iPad,   "iPad 2",                    768, 1024, 1, true, 20, 0},
    {"iPad13,1",   iPad,   "iPad Air (4th generation)", 820, 1180, 2, false, 24, 20},
    {"iPad7,5",    iPad,   "iPad (6th generation)",     768, 1024, 2, true, 20, 0},
    {"iPad8,5",    iPad,   "iPad Pro (12.9-inch, 3rd generation)", 1024, 1366, 2, false, 24, 20},
    {"iPod9,1",    iPod,   "iPod touch (7th generation)", 320, 568, 2, true, 20, 0},
    {"iPod3,1",    iPod,   "iPod touch (3rd generation)", 320, 480, 1, true, 20, 0},
    {"iPod5,1",    iPod,   "iPod touch (5th generation)", 320, 568, 2, true, 20, 0},
};
// clang-format on

}  // namespace

const DeviceModel* modelNamed(const std::string& productType) {
    for (const DeviceModel& model : kModels)
        if (productType == model.productType) return &model;
    return nullptr;
}

const DeviceModel* modelFor(DeviceFamily family, int scale) {
    for (const DeviceModel& model : kModels)
        if (model.family == family && model.scale == scale) return &model;
    return nullptr;
}

const DeviceModel& defaultModel(DeviceFamily family) {
    return *modelFor(family, family == DeviceFamily::iPhone ? 3 : 2);
}

const DeviceModel& modelOf(const DeviceFacts& facts) {
    // A product type of another family is a mistake in the profile; the family wins.
    if (const DeviceModel* model = modelNamed(facts.productType);
        model && model->family == facts.family)
        return *model;
    if (const DeviceModel* model = modelFor(facts.family, static_cast<int>(facts.screenScale)))
        return *model;
    return defaultModel(facts.family);
}

DeviceModelList knownModels() {
    return {kModels, std::size(kModels)};
}

}  // namespace plat
