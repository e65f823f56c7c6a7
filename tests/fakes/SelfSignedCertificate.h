#pragma once

#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/TemporaryDirectory.h"

namespace tests {

/// A certificate for 127.0.0.1 that nobody vouches for, made when this object is, in files that live as long.
class SelfSignedCertificate {
public:
    SelfSignedCertificate();

    const ScriptedServer::Certificate& Files() const { return _files; }

private:
    const TemporaryDirectory _directory;
    const ScriptedServer::Certificate _files;
};

}  // namespace tests
