#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include "client/sync/pass/RemoteTree.h"
#include "client/sync/plan/FileViews.h"
#include "client/sync/pull/PullPlan.h"
#include "client/sync/push/PushPlan.h"

namespace ovsync {
namespace both {

/// What is to be done on both sides: each file is looked at once, and what is to be done with it is for one of the two
/// plans. Does none of it. For one pass. Not thread-safe.
class TwoWayPlan {
public:
    struct Work {
        pull::PullPlan::Fetches fetches;
        pull::PullPlan::Folders folders;
        push::PushPlan::Work sends;
        /// The paths of those files that are to be sent only when the service's version is in the trash.
        QSet<QString> sentOver;
        /// The folders that stay, although one side deleted them, because the other one has something new in them.
        QSet<QString> needed;
    };

    /// The arguments outlive this object.
    TwoWayPlan(const plan::FileViews& views, const pass::RemoteTree& remote, pull::PullPlan& here,
               push::PushPlan& there)
        : _views(views), _remote(remote), _here(here), _there(there) {}

    Work Find();

private:
    QStringList _Paths() const;
    void _Take(const plan::FileView& view, Work& work);

    const plan::FileViews& _views;
    const pass::RemoteTree& _remote;
    pull::PullPlan& _here;
    push::PushPlan& _there;
};

}  // namespace both
}  // namespace ovsync
