#include "OrderedWork.h"

#include <atomic>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "Log.h"

namespace
{
// Keeps one item's messages until they can be passed on in order.
class CKeptMessages : public ILogSink
{
  public:
    void OnLog(int level, const std::string& text) override { m_entries.push_back({false, level, text}); }
    void OnProgress(int percent, const std::string& text) override { m_entries.push_back({true, percent, text}); }
    void PassOn() const
    {
        for (const SEntry& e : m_entries)
            if (e.progress)
                ProgressUpdate(e.value, "%s", e.text.c_str());
            else
                Log(e.value, "%s", e.text.c_str());
    }

  private:
    struct SEntry
    {
        bool progress;
        int value; // level or percent
        std::string text;
    };
    std::vector<SEntry> m_entries;
};

struct SItem
{
    CKeptMessages messages;
    bool ok = false;
    std::exception_ptr error;
};
} // namespace

unsigned ResolveThreadCount(unsigned threads)
{
    if (threads == 0)
        threads = std::thread::hardware_concurrency();
    return threads ? threads : 1u;
}

bool RunInOrder(uint32_t count, unsigned threads, const std::function<bool(uint32_t)>& work,
                const std::function<void(uint32_t)>& before, const std::function<void(uint32_t)>& after)
{
    threads = ResolveThreadCount(threads);
    if (threads > count)
        threads = count;
    if (threads <= 1)
    {
        for (uint32_t i = 0; i < count; ++i)
        {
            before(i);
            if (!work(i))
                return false;
            after(i);
        }
        return true;
    }

    std::vector<SItem> items(count);
    std::atomic<uint32_t> next{0};
    std::atomic<bool> failed{false};
    // Items are taken in index order and a taken item is always done, so when one fails every
    // earlier one is done too.
    auto worker = [&]() {
        while (!failed)
        {
            const uint32_t i = next++;
            if (i >= count)
                break;
            SItem& item = items[i];
            ILogSink* previous = SetThreadLogSink(&item.messages);
            try
            {
                item.ok = work(i);
            }
            catch (...)
            {
                item.error = std::current_exception();
            }
            SetThreadLogSink(previous);
            if (!item.ok)
                failed = true;
        }
    };
    std::vector<std::thread> helpers;
    try
    {
        helpers.reserve(threads - 1);
        for (unsigned t = 1; t < threads; ++t)
            helpers.emplace_back(worker);
    }
    catch (...) // no thread to be had: the ones running and this one do the work
    {
    }
    worker();
    for (std::thread& helper : helpers)
        helper.join();

    for (uint32_t i = 0; i < count; ++i)
    {
        before(i);
        items[i].messages.PassOn();
        if (items[i].error)
            std::rethrow_exception(items[i].error);
        if (!items[i].ok)
            return false;
        after(i);
    }
    return true;
}
