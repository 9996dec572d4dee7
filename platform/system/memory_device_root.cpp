#include "platform/system/memory_device_root.h"

#include <stdlib.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace plat {

namespace fs = std::filesystem;

struct MemoryDeviceRoot::Node {
    bool folder = false;
    // Shared with readers, who copy outside the lock.
    std::shared_ptr<const Bytes> data;
    std::map<std::string, std::unique_ptr<Node>, std::less<>> children;
    FileVersion version;
};

namespace {

using Node = MemoryDeviceRoot::Node;
using Parts = std::vector<std::string_view>;

// A version is never seen twice in a process, whichever device it came from: caches keyed by
// version then cannot mistake a file of one device for another's.
constexpr std::uint64_t kMemoryDevice = ~std::uint64_t{0};
std::atomic<std::uint64_t> serial{1};

std::uint64_t nextSerial() {
    return serial.fetch_add(1, std::memory_order_relaxed);
}

std::unique_ptr<Node> newNode(bool folder) {
    auto node = std::make_unique<Node>();
    node->folder = folder;
    node->version = {kMemoryDevice, nextSerial(), 0, static_cast<std::int64_t>(nextSerial())};
    if (!folder) node->data = std::make_shared<const Bytes>();
    return node;
}

void setContents(Node& node, Bytes bytes) {
    node.version.size = bytes.size();
    node.version.modified = static_cast<std::int64_t>(nextSerial());
    node.data = std::make_shared<const Bytes>(std::move(bytes));
}

Node* child(Node& folder, std::string_view name) {
    if (!folder.folder) return nullptr;
    auto found = folder.children.find(name);
    return found == folder.children.end() ? nullptr : found->second.get();
}

Node* walk(Node& top, const Parts& parts, std::size_t count) {
    Node* at = &top;
    for (std::size_t i = 0; at && i < count; ++i)
        at = child(*at, parts[i]);
    return at;
}

Node* find(Node& top, const Parts& parts) {
    return walk(top, parts, parts.size());
}

// The folder a new entry at `parts` goes into, or nullptr when there is none.
Node* parentFolder(Node& top, const Parts& parts) {
    if (parts.empty()) return nullptr;
    Node* parent = walk(top, parts, parts.size() - 1);
    return parent && parent->folder ? parent : nullptr;
}

PortStatus failed(std::string_view verb, std::string_view path, const std::string& why) {
    return portFailure("Cannot " + std::string(verb) + " " + std::string(path) + ": " + why);
}

PortStatus failed(std::string_view verb, std::string_view path, int code) {
    return failed(verb, path, std::string(std::strerror(code)));
}

template <class T>
PortResult<T> failedWith(const PortStatus& failure) {
    return PortResult<T>::failure(failure.error());
}

std::string joined(const Parts& parts) {
    std::string path;
    for (auto part : parts)
        path += "/" + std::string(part);
    return path.empty() ? "/" : path;
}

// Which versions a folder's files have: equal fingerprints, nothing there has changed.
void fingerprint(const Node& node, const std::string& path, std::string& out) {
    out += path + ":" + std::to_string(node.version.inode) + ":" +
           std::to_string(node.version.modified) + "\n";
    for (const auto& [name, entry] : node.children)
        fingerprint(*entry, path + "/" + name, out);
}

bool writeOut(const Node& node, const fs::path& host) {
    std::error_code ec;
    if (node.folder) {
        fs::create_directories(host, ec);
        if (ec) return false;
        for (const auto& [name, entry] : node.children)
            if (!writeOut(*entry, host / name)) return false;
        return true;
    }
    std::ofstream out(host, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(node.data->data()),
              static_cast<std::streamsize>(node.data->size()));
    return static_cast<bool>(out);
}

}  // namespace

MemoryDeviceRoot::MemoryDeviceRoot() : number_(nextSerial()), top_(newNode(true)) {}

MemoryDeviceRoot::~MemoryDeviceRoot() {
    std::error_code ec;
    if (!exported_.empty()) fs::remove_all(exported_, ec);
}

std::string MemoryDeviceRoot::describe() const {
    return "device in memory #" + std::to_string(number_);
}

PortResult<FileStatus> MemoryDeviceRoot::status(std::string_view devicePath) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    std::lock_guard lock(mutex_);
    const Node* node = find(*top_, parts);
    if (!node) return failedWith<FileStatus>(failed("look at", devicePath, ENOENT));
    return FileStatus{node->folder ? FileKind::Folder : FileKind::File, node->version};
}

PortResult<Bytes> MemoryDeviceRoot::readFile(std::string_view devicePath,
                                             std::uint64_t limit) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    std::shared_ptr<const Bytes> data;
    {
        std::lock_guard lock(mutex_);
        const Node* node = find(*top_, parts);
        if (!node) return failedWith<Bytes>(failed("read", devicePath, ENOENT));
        if (node->folder)
            return failedWith<Bytes>(failed("read", devicePath, "not a regular file"));
        data = node->data;
    }
    if (data->size() > limit)
        return failedWith<Bytes>(
            failed("read", devicePath, "larger than " + std::to_string(limit) + " bytes"));
    return *data;
}

PortStatus MemoryDeviceRoot::writeFile(std::string_view devicePath, const Bytes& bytes,
                                       bool atomically) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    Bytes contents = bytes;
    std::lock_guard lock(mutex_);
    Node* parent = parentFolder(*top_, parts);
    if (!parent) return failed("write", devicePath, ENOENT);
    auto& slot = parent->children[std::string(parts.back())];
    if (slot && slot->folder) return failed("write", devicePath, "not a regular file");
    // Atomically, a new file replaces the old one; in place, the file stays itself.
    if (!slot || atomically) slot = newNode(false);
    setContents(*slot, std::move(contents));
    return portSuccess();
}

PortStatus MemoryDeviceRoot::appendFile(std::string_view devicePath, const Bytes& bytes) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    std::lock_guard lock(mutex_);
    Node* parent = parentFolder(*top_, parts);
    if (!parent) return failed("append to", devicePath, ENOENT);
    auto& slot = parent->children[std::string(parts.back())];
    if (!slot) slot = newNode(false);
    if (slot->folder) return failed("append to", devicePath, "not a regular file");
    Bytes contents = *slot->data;
    contents.insert(contents.end(), bytes.begin(), bytes.end());
    setContents(*slot, std::move(contents));
    return portSuccess();
}

PortStatus MemoryDeviceRoot::createDirectory(std::string_view devicePath,
                                             bool withIntermediates) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    std::lock_guard lock(mutex_);
    Node* at = top_.get();
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool last = i + 1 == parts.size();
        Node* next = child(*at, parts[i]);
        if (!next) {
            if (!last && !withIntermediates) {
                return failed("create", devicePath, ENOENT);
            }
            next = at->children.emplace(std::string(parts[i]), newNode(true)).first->second.get();
        } else if (!next->folder) {
            return failed("create", devicePath, last ? EEXIST : ENOTDIR);
        } else if (last && !withIntermediates) {
            return failed("create", devicePath, EEXIST);
        }
        at = next;
    }
    // An existing folder is success with intermediates, as it is for the Foundation call.
    if (parts.empty() && !withIntermediates) {
        return failed("create", devicePath, EEXIST);
    }
    return portSuccess();
}

PortStatus MemoryDeviceRoot::removeItem(std::string_view devicePath) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    std::lock_guard lock(mutex_);
    if (parts.empty()) {
        return failed("remove", devicePath, EPERM);
    }
    if (Node* parent = parentFolder(*top_, parts)) {
        const auto found = parent->children.find(parts.back());
        if (found != parent->children.end()) {
            parent->children.erase(found);
            return portSuccess();
        }
    }
    return failed("remove", devicePath, ENOENT);
}

PortStatus MemoryDeviceRoot::moveItem(std::string_view from, std::string_view to) const {
    observe(from);
    observe(to);
    const Parts source = devicePathComponents(from);
    const Parts target = devicePathComponents(to);
    const std::string verb = "move " + std::string(from) + " to";
    std::lock_guard lock(mutex_);
    Node* sourceParent = parentFolder(*top_, source);
    Node* targetParent = parentFolder(*top_, target);
    if (!sourceParent || !child(*sourceParent, source.back()) || !targetParent) {
        return failed(verb, to, ENOENT);
    }
    if (child(*targetParent, target.back())) {
        return failed(verb, to, EEXIST);
    }
    // A folder cannot go inside itself.
    if (target.size() > source.size() && std::equal(source.begin(), source.end(), target.begin())) {
        return failed(verb, to, EINVAL);
    }
    const auto found = sourceParent->children.find(source.back());
    auto moving = std::move(found->second);
    sourceParent->children.erase(found);
    targetParent->children.emplace(std::string(target.back()), std::move(moving));
    return portSuccess();
}

std::vector<std::string> MemoryDeviceRoot::contentsOfDirectory(std::string_view devicePath) const {
    observe(devicePath);
    const Parts parts = devicePathComponents(devicePath);
    std::vector<std::string> names;
    std::lock_guard lock(mutex_);
    const Node* node = find(*top_, parts);
    if (!node || !node->folder) return names;
    for (const auto& entry : node->children)
        names.push_back(entry.first);
    return names;
}

std::optional<fs::path> MemoryDeviceRoot::hostFolderHolding(std::string_view deviceFolder) const {
    const Parts parts = devicePathComponents(deviceFolder);
    const std::string key = joined(parts);
    std::lock_guard lock(mutex_);
    if (exported_.empty()) {
        std::string pattern = (fs::temp_directory_path() / "device-root-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) return std::nullopt;
        exported_ = pattern;
    }
    const Node* node = find(*top_, parts);
    std::string version;
    if (node) fingerprint(*node, key, version);
    auto& known = exportedVersions_[key];
    if (known == version && !version.empty()) return exported_;
    fs::path host = exported_;
    for (auto part : parts)
        host /= std::string(part);
    std::error_code ec;
    fs::remove_all(host, ec);
    if (node) {
        fs::create_directories(host.parent_path(), ec);
        if (!writeOut(*node, host)) {
            known.clear();
            return std::nullopt;
        }
    }
    known = version;
    return exported_;
}

namespace {

class HeldWriters final : public DeviceRoot::FolderLock {
  public:
    explicit HeldWriters(std::recursive_mutex& writers) : lock_(writers) {}

  private:
    std::unique_lock<std::recursive_mutex> lock_;
};

}  // namespace

std::unique_ptr<DeviceRoot::FolderLock> MemoryDeviceRoot::lockFolder(std::string_view) const {
    return std::make_unique<HeldWriters>(writers_);
}

}  // namespace plat
