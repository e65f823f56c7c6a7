#pragma once

#include <string>

#include "tests/sync-proof/TwoSides.h"

namespace syncproof {

/// Changes of all kinds on both sides, the same over and over with other contents, and what a pass has to make of them.
/// Before each of them both sides are in step.
class Changes {
public:
    explicit Changes(TwoSides& sides) : _sides(sides) {}

    /// Makes changes on both sides for a pull with --delete.
    void MakeForPull();
    /// Makes changes on both sides for a push.
    void MakeForPush();

    /// Makes changes on both sides for a sync, without a conflict.
    void MakeForSync();

    /// What both sides were before the changes were made known to each other.
    const FolderImage& HereBefore() const { return _here; }
    const FolderImage& ThereBefore() const { return _there; }
    /// What the pass makes of the side that it changes. Copies of versions in conflict come on top.
    const FolderImage& Wanted() const { return _wanted; }

    /// Fails the test when `now`, which a pass was to change, has lost something or has something half-done in it.
    void ExpectOldOrNew(const FolderImage& before, const FolderImage& now) const;
    /// Fails the test when this side is not what a pull makes of it.
    void ExpectPulled() const;
    /// Fails the test when the service is not what a push makes of it.
    void ExpectPushed() const;

    /// Fails the test when both sides are not what a sync makes of them.
    void ExpectSynced() const;

    /// Brings both sides in step again by ending the conflict that each change makes.
    void Settle();

private:
    std::string _Text(const std::string& what) const { return what + " " + std::to_string(_number); }
    std::string _Large() const;
    void _Remember();

    TwoSides& _sides;
    int _number = 0;
    FolderImage _here;
    FolderImage _there;
    FolderImage _wanted;
};

}  // namespace syncproof
