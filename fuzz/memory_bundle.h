// A process on an in-memory device with a bundle folder, so that a run costs what the parser
// costs, not what the file system does. A target that includes this header defines
// fuzzInBundle, which the entry point below calls with every input on one device, made on the
// first run and kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/foundation/value.h"
#include "platform/system/bundle.h"
#include "platform/system/memory_device_root.h"
#include "platform/system/process.h"

class MemoryBundle {
  public:
    MemoryBundle() {
        plat::Process::Options options;
        options.echoLog = false;
        process_ =
            std::make_unique<plat::Process>(std::make_shared<plat::MemoryDeviceRoot>(), options);
        scope_ = std::make_unique<plat::ProcessScope>(*process_);
        // Writes go straight into the bundle's folder, which must be there first.
        if (!process_->root().createDirectory(kPath, true)) std::abort();
    }

    // Puts the bytes in the bundle under the file name; a failed write is the harness's own
    // fault, not the parser's, so it stops the run.
    void put(const std::string& fileName, const plat::Bytes& bytes) {
        if (!process_->root().writeFile(std::string(kPath) + "/" + fileName, bytes, false))
            std::abort();
    }

    plat::Bundle bundle() const { return plat::Bundle(kPath); }
    plat::Process& process() { return *process_; }

  private:
    static constexpr const char* kPath = "/System/Library/PreferenceBundles/Fuzz.bundle";
    std::unique_ptr<plat::Process> process_;
    std::unique_ptr<plat::ProcessScope> scope_;
};

void fuzzInBundle(MemoryBundle& device, const plat::Bytes& input);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryBundle device;
    fuzzInBundle(device, plat::Bytes(data, data + size));
    // Keeps the journal from growing over a long run.
    device.process().journal().clear();
    return 0;
}
