#include "service/tree/Checksums.h"

#include <exception>

#include "service/tree/ServiceTree.h"

namespace service::tree {
namespace {

// In bytes.
constexpr std::int64_t LargeFile = 1048576;

}  // namespace

Checksums::Checksums(ServiceTree& tree) : _tree(tree), _worker([this] { _Work(); }) {}

Checksums::~Checksums() {
    {
        const std::lock_guard lock(_mutex);
        _isStopped = true;
    }
    _changed.notify_all();
    _worker.join();
}

void Checksums::Complete(Listing::Entry& entry) {
    if (!_Claim(entry.resource)) {
        return;
    }
    try {
        _tree.CompleteChecksum(entry, [this] {
            const std::lock_guard lock(_mutex);
            return _isStopped;
        });
    } catch (...) {
        _Finish(entry.resource);
        throw;
    }
    _Finish(entry.resource);
}

void Checksums::CompleteAllLater() {
    const std::lock_guard lock(_mutex);
    _isMoreWanted = true;
    _changed.notify_all();
}

// Whether the checksum is for the caller to compute, who then calls _Finish(). If it has been computed, but is not yet
// kept, `resource` gets it.
bool Checksums::_Claim(store::Resource& resource) {
    const std::lock_guard lock(_mutex);
    const auto [claim, isNew] = _claimed.emplace(resource.id, resource);
    const store::Resource& known = claim->second;
    if (!isNew && known.size == resource.size && known.modified == resource.modified) {
        resource.md5 = known.md5;
    }
    return isNew;
}

void Checksums::_Finish(const store::Resource& resource) {
    const std::lock_guard lock(_mutex);
    if (resource.md5.empty()) {
        _claimed.erase(resource.id);
        return;
    }
    _claimed[resource.id].md5 = resource.md5;
    _computed.push_back(resource);
    _changed.notify_all();
}

void Checksums::_Work() {
    std::unique_lock lock(_mutex);
    while (true) {
        _changed.wait(lock, [this] { return _isStopped || _isMoreWanted || !_computed.empty(); });
        if (_isStopped) {
            break;
        }
        _KeepComputed(lock);
        if (!_isMoreWanted) {
            continue;
        }
        _isMoreWanted = false;
        for (std::int64_t id = 0; id >= 0 && !_isStopped;) {
            lock.unlock();
            id = _CompleteSome(id);
            lock.lock();
            _KeepComputed(lock);
        }
    }
    _KeepComputed(lock);
}

// Has the tree keep what was computed. `lock` is open meanwhile.
void Checksums::_KeepComputed(std::unique_lock<std::mutex>& lock) {
    if (_computed.empty()) {
        return;
    }
    const std::vector<store::Resource> computed = std::move(_computed);
    _computed.clear();
    lock.unlock();
    try {
        _tree.KeepChecksums(computed);
    } catch (const std::exception&) {
        // A full disk, for example; the next listing has them computed again.
    }
    lock.lock();
    for (const store::Resource& resource : computed) {
        _claimed.erase(resource.id);
    }
}

// Computes some of the checksums that files with an id above `afterId` lack. Returns the id to go on after, or -1 when
// there are no more.
std::int64_t Checksums::_CompleteSome(std::int64_t afterId) try {
    auto entries = _tree.WithoutChecksum(afterId);
    for (Listing::Entry& entry : entries) {
        // To keep many at once is faster, but nobody who wants that of a small file is to wait for a large one.
        if (std::unique_lock lock(_mutex); entry.resource.size > LargeFile) {
            _KeepComputed(lock);
        }
        Complete(entry);
    }
    return entries.empty() ? -1 : entries.back().resource.id;
} catch (const std::exception&) {
    return -1;
}

}  // namespace service::tree
