#pragma once

#include <string>

namespace plat {

// NSBundle reduced to what a preference bundle uses: its folder on the device, resources by
// name, and string localisation through <table>.strings files (property lists, as compiled
// bundles ship them; looked up in the bundle's folder and in en.lproj).
class Bundle {
  public:
    explicit Bundle(std::string devicePath) : path_(std::move(devicePath)) {}

    // The Settings application's own bundle.
    static Bundle mainBundle();

    const std::string& bundlePath() const { return path_; }
    // "<bundle>/<name>.<ext>" when it exists, else "".
    std::string pathForResource(const std::string& name, const std::string& ext) const;
    // localizedStringForKey:value:table:. An empty table means "Localizable". Without a
    // translation: the value when it is not empty, else the key.
    std::string localizedStringForKey(const std::string& key, const std::string& value,
                                      const std::string& table) const;

  private:
    std::string path_;
};

// NSLocalizedString(key, comment): the main bundle's Localizable table, the key itself when
// there is no translation.
inline std::string NSLocalizedString(const std::string& key) {
    return Bundle::mainBundle().localizedStringForKey(key, "", "");
}

}  // namespace plat
