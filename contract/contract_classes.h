#pragma once

namespace velto {

// Registers the two libraries' classes with the runtime (idempotent).
void registerContractClasses();

}  // namespace velto
