#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "service/store/Resource.h"
#include "service/tree/Listing.h"

namespace service::tree {

class ServiceTree;

/// Computes the checksums that files lack because people put them there, and has the tree keep them. Those that nobody
/// can wait for are computed in a thread of this object, one after the other, and kept as they come. Nothing is
/// computed twice, unless the file has changed meanwhile, cannot be read, or the disk is too full to keep its checksum.
/// Thread-safe.
class Checksums {
public:
    /// `tree` must outlive this object.
    explicit Checksums(ServiceTree& tree);
    /// Ends what is being computed.
    ~Checksums();
    Checksums(const Checksums&) = delete;
    Checksums& operator=(const Checksums&) = delete;

    /// Computes the checksum of a file that lacks it. It stays empty when somebody else is at it, or when the file has
    /// changed since it was listed.
    void Complete(Listing::Entry& entry);

    /// Computes all that are missing in the tree, but does not wait for them.
    void CompleteAllLater();

private:
    bool _Claim(store::Resource& resource);
    void _Finish(const store::Resource& resource);
    void _Work();
    void _KeepComputed(std::unique_lock<std::mutex>& lock);
    std::int64_t _CompleteSome(std::int64_t afterId);

    ServiceTree& _tree;
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _isStopped = false;
    bool _isMoreWanted = false;
    // By id, from the beginning of the computation until the tree keeps its result; with a checksum once there is one.
    std::map<std::int64_t, store::Resource> _claimed;
    std::vector<store::Resource> _computed;
    // Last, because it uses all of them.
    std::thread _worker;
};

}  // namespace service::tree
