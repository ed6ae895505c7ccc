// A worker that has ended with this result.
#pragma once

#include <QFutureInterface>

template<typename Result>
[[nodiscard]] QFuture<Result> ended(const Result &result) {
    QFutureInterface<Result> promise;
    promise.reportStarted();
    promise.reportFinished(&result);
    return promise.future();
}
