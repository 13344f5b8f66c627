// Work on independent items spread over threads, with its effects passed on in item order.
//
// RunInOrder calls work(i) for every i in [0, count) on up to `threads` threads (the calling thread
// is one of them; 0 means one a core), keeping the messages each call logs. On the calling thread
// and in index order, as each item is done, it calls before(i), passes on item i's messages,
// rethrows the exception work(i) threw, if any, and stops with false when work(i) or then after(i)
// returns false. The caller thus sees exactly what a plain loop over the items would show, whatever
// the threads did. Items after a failed one may have been worked on; their results are dropped.
// Preconditions: work(i) touches only item i's data and what no other item writes; before and
// after run on the calling thread only. With one thread (or one item) it is that plain loop.
// Cost: the items' own work, divided among the threads. Threads run at most two items a thread
// ahead of the ordered pass, so finished items waiting for their turn hold little memory.
#pragma once

#include <cstdint>
#include <functional>

bool RunInOrder(uint32_t count, unsigned threads, const std::function<bool(uint32_t)>& work,
                const std::function<void(uint32_t)>& before, const std::function<bool(uint32_t)>& after);

// The number of threads RunInOrder uses for `threads` (0: one a core, at least one).
unsigned ResolveThreadCount(unsigned threads);
