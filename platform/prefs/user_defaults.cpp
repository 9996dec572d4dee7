#include "platform/prefs/user_defaults.h"

#include "platform/system/process.h"

namespace plat {

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults defaults;
    return defaults;
}

bool UserDefaults::synchronize() {
    if (Process* process = Process::tryCurrent()) {
        JournalEntry entry;
        entry.kind = JournalEntry::Kind::Synchronize;
        process->journal().append(std::move(entry));
    }
    return true;
}

}  // namespace plat
