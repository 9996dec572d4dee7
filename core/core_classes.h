#pragma once

namespace velto {

// Registers the root page and the switch cell with the runtime (idempotent).
void registerCoreClasses();

}  // namespace velto
