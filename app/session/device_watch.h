#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/session/change_watch.h"
#include "app/session/watch_run.h"

namespace velto::app {

// What `watch` and `serve` look at on a device (its settings files, its copy of the bundle and,
// for the demo device, the folder the bundle is installed from) and what a change there means.
class DeviceWatch {
  public:
    explicit DeviceWatch(WatchPlaces places);

    // The files changed since the previous look, once a save made of several writes is over:
    // while files keep changing, it looks again for up to a second, unless `stop` says to end.
    // Empty when nothing changed.
    std::vector<std::filesystem::path> settledChanges(const std::function<bool()>& stop);

    // "changed: PATH...", device paths for the files on the device, ending in a newline.
    std::string note(const std::vector<std::filesystem::path>& changed) const;

    // The device gets the bundle afresh when the change touched the folder it is installed
    // from. Throws what the installation throws.
    void reinstallIfNeeded(const std::vector<std::filesystem::path>& changed) const;

    // Takes what was written since the previous look as seen: the redraw's own writes are not
    // a change; what anyone writes once the page is out is.
    void forget() { watch_.changes(); }

  private:
    WatchPlaces places_;
    std::filesystem::path settings_;
    ChangeWatch watch_;
};

}  // namespace velto::app
