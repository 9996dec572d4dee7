#include "platform/prefs/user_defaults.h"

#include "platform/system/process.h"

namespace plat {

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults defaults;
    return defaults;
}

bool UserDefaults::synchronize() {
    Process::record(journal::Synchronize{});
    return true;
}

}  // namespace plat
