#include "tests/app/page_fixtures.h"

#include <gtest/gtest.h>

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"

namespace apptest {

std::vector<std::string> rowIds(const nlohmann::json& page) {
    std::vector<std::string> ids;
    for (const auto& row : page.at("rows"))
        ids.push_back(row.at("id").is_string() ? row.at("id").get<std::string>()
                                               : row.at("label").get<std::string>());
    return ids;
}

nlohmann::json rowWithId(const nlohmann::json& page, const std::string& id) {
    for (const auto& row : page.at("rows"))
        if (row.at("id") == id) return row;
    return nullptr;
}

std::vector<nlohmann::json> journalOf(const nlohmann::json& page, const std::string& kind) {
    std::vector<nlohmann::json> entries;
    for (const auto& entry : page.at("journal"))
        if (entry.at("kind") == kind) entries.push_back(entry);
    return entries;
}

void writeRootList(const std::string& device,
                   const std::vector<std::pair<std::string, std::string>>& links,
                   const std::string& masterSetter) {
    plat::Value items = plat::Value::array(
        {plat::Value::dictionary(
             {{"cell", "PSGroupCell"}, {"id", "VeltoHeader"}, {"label", "Velto 2"}}),
         plat::Value::dictionary({{"cell", "PSSwitchCell"},
                                  {"id", "VeltoEnabled"},
                                  {"label", "Enabled"},
                                  {"key", "VeltoEnabled"},
                                  {"defaults", "com.norvale.velto"},
                                  {"default", plat::Value::boolean(false)},
                                  {"PostNotification", "com.norvale.veltosettingschanged"},
                                  {"set", masterSetter}})});
    for (const auto& [label, detail] : links) {
        items.addObject(
            plat::Value::dictionary({{"cell", "PSGroupCell"}, {"label", label + " group"}}));
        items.addObject(plat::Value::dictionary(
            {{"cell", "PSLinkCell"}, {"label", label}, {"detail", detail}}));
    }
    const auto bytes = plat::dataFromPropertyList(plat::Value::dictionary({{"items", items}}),
                                                  plat::PropertyListFormat::XML);
    ASSERT_TRUE(bytes);
    const plat::DeviceRoot root(device);
    ASSERT_TRUE(root.writeFile("/System/Library/PreferenceBundles/VeltoSettings.bundle/Velto.plist",
                               *bytes, false));
}

}  // namespace apptest
