#pragma once

#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace wire {

/// Gives the transactions that a HttpConnection performs several of at the same time.
class ITransactionQueue {
public:
    virtual ~ITransactionQueue() = default;

    /// The next one, which lives until it was handed to OnPerformed or PerformAll threw; null when there is none at
    /// this moment. Asked again after each that was performed.
    virtual HttpTransaction* Next() = 0;

    /// The answer of `transaction` came completely and it took it. The LastAnswer is its. What this throws ends all.
    virtual void OnPerformed(HttpTransaction& transaction) = 0;
};

}  // namespace wire
}  // namespace ovsync
