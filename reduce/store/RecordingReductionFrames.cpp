// CRecordingReduction::ReduceFrames: blocks of frames reduced on several
// threads, each with its own clone, and handed on in frame order through a
// pipeline whose few tokens bound the memory held.
#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include <tbb/info.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>

#include "reduce/store/RecordingReduction.h"

namespace orv::reduce {

namespace {

// Memory for the blocks in flight, values and status together; a block
// holds at least one frame.
constexpr size_t kBlocksBytes = size_t(64) << 20;
constexpr size_t kMaxBlockBytes = size_t(4) << 20;

struct SFrameBlock {
    uint64_t first = 0;
    uint64_t count = 0;
    // Where this block goes: the caller's memory or the buffers below,
    // which are allocated only when needed.
    float* values = nullptr;
    unsigned char* status = nullptr;
    std::vector<float> ownValues;
    std::vector<unsigned char> ownStatus;
    bool ok = false;
    CString error;
};

// Frames of one block, into its buffers; false with the reason at the first
// frame that fails.
bool ReduceBlock(CRecordingReduction& r, SFrameBlock& b)
{
    const size_t n = r.pixels();
    for (uint64_t k = 0; k < b.count; ++k)
        if (!r.Reduce(b.first + k, b.values + k * n, b.status + k * n, n)) {
            b.error = r.lastError();
            return false;
        }
    return true;
}

// Things threads take and give back: clones of the reduction, blocks.
template <class T>
class TPool {
public:
    T* Take()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_free.empty()) return nullptr;
        T* t = m_free.back();
        m_free.pop_back();
        return t;
    }
    void Give(T* t)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_free.push_back(t);
    }
    T* Own(std::unique_ptr<T> t)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_owned.push_back(std::move(t));
        return m_owned.back().get();
    }

private:
    std::mutex m_mutex;
    std::vector<T*> m_free;
    std::vector<std::unique_ptr<T>> m_owned;
};

} // namespace

bool CRecordingReduction::ReduceFrames(uint64_t first, uint64_t end, unsigned threads, const TFrameBlockSink& sink,
                                       uint64_t blockFrames)
{
    return ReduceFrames(first, end, threads, sink, blockFrames, TFrameBlockTarget());
}

bool CRecordingReduction::ReduceFrames(uint64_t first, uint64_t end, unsigned threads, const TFrameBlockSink& sink,
                                       uint64_t blockFrames, const TFrameBlockTarget& target)
{
    m_error = CString();
    if (!isOpen()) return Fail("no recording is open");
    if (!sink) return Fail("no receiver for the frames");
    if (first > end || end > numFrames())
        return Fail("frames %llu to %llu are out of range: the recording holds %llu frames",
                    static_cast<unsigned long long>(first), static_cast<unsigned long long>(end),
                    static_cast<unsigned long long>(numFrames()));
    if (first == end) return true;

    const size_t n = pixels();
    const size_t frameBytes = n * (sizeof(float) + 1);
    if (threads == 0) threads = unsigned(std::max(1, tbb::info::default_concurrency()));
    // Two blocks a thread keep every thread busy while one is written.
    const unsigned tokens = 2 * threads;
    const uint64_t perBlock =
        blockFrames ? std::min(blockFrames, end - first)
                    : std::max<uint64_t>(1, std::min(kMaxBlockBytes, kBlocksBytes / tokens) / frameBytes);
    const uint64_t blocks = (end - first + perBlock - 1) / perBlock;
    if (threads > blocks) threads = unsigned(blocks);
    if (path().empty()) threads = 1;

    // The block's destination: the caller's, else buffers of its own.
    auto place = [&](SFrameBlock& b) {
        b.values = nullptr;
        b.status = nullptr;
        if (target) target(b.first, b.count, b.values, b.status);
        if (!b.values) {
            b.ownValues.resize(perBlock * n);
            b.values = b.ownValues.data();
        }
        if (!b.status) {
            b.ownStatus.resize(perBlock * n);
            b.status = b.ownStatus.data();
        }
    };
    if (threads <= 1) {
        SFrameBlock b;
        for (b.first = first; b.first < end; b.first += b.count) {
            b.count = std::min(perBlock, end - b.first);
            place(b);
            if (!ReduceBlock(*this, b)) return Fail("%s", b.error.c_str());
            if (!sink(b.first, b.count, b.values, b.status))
                return Fail("the receiver of the frames stopped at frame %llu",
                            static_cast<unsigned long long>(b.first));
        }
        return true;
    }

    TPool<CRecordingReduction> twins;
    twins.Give(this);
    TPool<SFrameBlock> spare;
    uint64_t next = first;
    std::atomic<bool> stop{false};
    CString error;
    tbb::task_arena arena{static_cast<int>(threads)};
    arena.execute([&] {
        tbb::parallel_pipeline(
            tokens,
            tbb::make_filter<void, SFrameBlock*>(tbb::filter_mode::serial_in_order,
                                                 [&](tbb::flow_control& fc) -> SFrameBlock* {
                                                     if (next >= end || stop) {
                                                         fc.stop();
                                                         return nullptr;
                                                     }
                                                     SFrameBlock* b = spare.Take();
                                                     if (!b) b = spare.Own(std::make_unique<SFrameBlock>());
                                                     b->first = next;
                                                     b->count = std::min(perBlock, end - next);
                                                     next += b->count;
                                                     return b;
                                                 }) &
                tbb::make_filter<SFrameBlock*, SFrameBlock*>(
                    tbb::filter_mode::parallel,
                    [&](SFrameBlock* b) {
                        b->ok = false;
                        if (stop) return b; // after a failure: never handed on
                        place(*b);
                        CRecordingReduction* r = twins.Take();
                        if (!r) {
                            auto twin = std::make_unique<CRecordingReduction>();
                            if (!twin->OpenClone(*this)) {
                                b->error = twin->lastError();
                                return b;
                            }
                            r = twins.Own(std::move(twin));
                        }
                        b->ok = ReduceBlock(*r, *b);
                        twins.Give(r);
                        return b;
                    }) &
                tbb::make_filter<SFrameBlock*, void>(tbb::filter_mode::serial_in_order, [&](SFrameBlock* b) {
                    // In frame order: the first failure seen here is the
                    // first in the recording, and nothing after it is sent.
                    if (!stop) {
                        if (!b->ok) {
                            error = b->error;
                            stop = true;
                        } else if (!sink(b->first, b->count, b->values, b->status)) {
                            error = CString::FromFormat("the receiver of the frames stopped at frame %llu",
                                                        static_cast<unsigned long long>(b->first));
                            stop = true;
                        }
                    }
                    spare.Give(b);
                }));
    });
    if (stop) return Fail("%s", error.c_str());
    return true;
}

} // namespace orv::reduce
