#pragma once

#include <memory>

// The host's meta-objects spell the shared pointer of a signal's argument std::tr1::shared_ptr, and Qt connects by that
// spelling. The standard library of the host's compiler has the name as an alias of std::shared_ptr; others need it
// here.
#ifndef _MSC_VER
namespace std {
namespace tr1 {
using std::shared_ptr;
}  // namespace tr1
}  // namespace std
#endif
