#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"

namespace ovsync {
namespace changes {

/// What changed in a folder of a service, with all that lies below it. A plain value.
struct ServiceChanges {
    enum class Answer {
        Known,
        /// The service does not know what changed since then.
        Forgotten,
        /// It does not answer such questions.
        NotAble
    };

    Answer answer = Answer::NotAble;
    /// What is new or changed, as a listing has it; maybe more than that.
    QVector<sync::config::FolderConfiguration> folders;
    QVector<sync::config::FileConfiguration> files;
    /// The server paths of what is gone, with everything that was in it.
    QStringList gone;
    /// The server paths of folders of which all was told that lies right in them: what else was there is gone. Where
    /// there is any, what lies in the other folders that were told of is as it was.
    QStringList whole;
    /// To ask with the next time.
    QString state;
    /// The service's time of the answer; invalid when it told none.
    QDateTime at;
};

}  // namespace changes
}  // namespace ovsync
