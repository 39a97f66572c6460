#pragma once

#include <cstddef>

namespace Norvane::Imaging {

/// Work on the rows [first, last) of an image. Called on several threads at once with disjoint ranges; what
/// one call throws, RunRows throws once all have ended.
class RowTask {
public:
    virtual void Rows(std::size_t first, std::size_t last) = 0;

protected:
    ~RowTask() = default;
};

/// Spreads `rows` rows over the calling thread and the library's row workers, and returns when all are done.
/// No band is smaller than `grain` rows except the last one. The workers are made at the first use or by
/// StartRowWorkers(), at most one less than the machine has hardware threads, and live until the program
/// ends. Any thread; calls from several threads share the workers.
void RunRows(std::size_t rows, std::size_t grain, RowTask& task);

/// Makes the row workers now. A thread inherits the priority of the one that makes it, so a thread that keeps
/// the ordinary priority calls this before others of a lower one can be the first to need them.
void StartRowWorkers();

/// The same as RunRows, with a callable.
template <class Function>
void ForRows(std::size_t rows, std::size_t grain, Function&& function) {
    struct Task final : RowTask {
        explicit Task(Function& f) : call(f) {}
        void Rows(std::size_t first, std::size_t last) override { call(first, last); }
        Function& call;
    } task(function);
    RunRows(rows, grain, task);
}

/// Limits how many threads one image is spread over, the caller included; 0 removes the limit. For
/// measurements.
void LimitRowThreads(unsigned threads) noexcept;
unsigned RowThreads() noexcept;

} // namespace Norvane::Imaging
