#pragma once

namespace velto {

// Makes every class of the bundle (and of the two libraries it links) known to the runtime,
// as loading the bundle does on a device. Idempotent.
void registerBundleClasses();

}  // namespace velto
