#pragma once

#include <QString>
#include <QUrl>

namespace ovsync {
namespace input {

/// A place on a server, as a user names it on the command line. A plain value.
struct Location {
    /// Scheme, host and port.
    QUrl baseUrl;
    /// Decoded, without a '/' at either end; empty for the root.
    QString serverPath;
    /// The user in the URL; empty when there is none.
    QString user;
    /// Whether the URL ends in '/'.
    bool isTypedAsFolder = false;

    /// `text` is a URL in UTF-8, with or without percent-encoding. Throws UsageError when it is no http or https URL,
    /// has a query or a fragment, holds a password, or has a path that no server path stands for.
    static Location FromUrl(const QString& text);

    /// Host and port, as errors name it.
    QString Server() const { return baseUrl.authority(); }
    QUrl Url() const;
    /// The same for every spelling of one URL.
    QString Address() const;

    /// The server path of the collection that the place lies in, and the name of the place in it.
    QString ParentPath() const;
    QString Name() const;
    /// The collection that the place lies in, as a place itself.
    Location Parent() const;
    /// What is named `name` in it.
    Location Below(const QString& name) const;

    /// Whether scheme, host and port are the same.
    bool IsOnServerOf(const Location& other) const;
};

}  // namespace input
}  // namespace ovsync
