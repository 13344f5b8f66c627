#include "OrderedWork.h"

#include <condition_variable>
#include <exception>
#include <mutex>
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
    void Clear() { std::vector<SEntry>().swap(m_entries); }

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
    bool done = false; // guarded by the mutex
    std::exception_ptr error;
};

// The items, the threads working on them and the ordered pass's progress. Items are taken in index
// order, at most `window` beyond the last item the ordered pass has finished, so that finished
// items waiting for their turn hold a bounded amount of memory.
class CItemPool
{
  public:
    CItemPool(uint32_t count, unsigned threads, const std::function<bool(uint32_t)>& work)
        : m_items(count), m_work(work), m_nWindow(2 * threads)
    {
        try
        {
            for (unsigned t = 1; t < threads; ++t)
                m_helpers.emplace_back([this]() { Help(); });
        }
        catch (...) // no more threads to be had: the ones running and the caller do the work
        {
        }
    }
    ~CItemPool()
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_bStop = true;
        }
        m_changed.notify_all();
        for (std::thread& helper : m_helpers)
            helper.join();
    }
    CItemPool(const CItemPool&) = delete;
    CItemPool& operator=(const CItemPool&) = delete;

    // Item k, done: the caller works on the items due meanwhile.
    SItem& Await(uint32_t k)
    {
        for (;;)
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            if (m_items[k].done)
                return m_items[k];
            if (Takeable())
            {
                const uint32_t i = m_nNext++;
                lock.unlock();
                Do(i);
                continue;
            }
            m_changed.wait(lock, [&]() { return m_items[k].done; });
        }
    }
    // The ordered pass has finished item k.
    void Finished(uint32_t k)
    {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_nFinished = k + 1;
        }
        m_items[k].messages.Clear();
        m_changed.notify_all();
    }

  private:
    bool Takeable() const { return m_nNext < m_items.size() && m_nNext < m_nFinished + m_nWindow; }
    void Help()
    {
        for (;;)
        {
            uint32_t i;
            {
                std::unique_lock<std::mutex> lock(m_mutex);
                m_changed.wait(lock, [&]() { return m_bStop || m_nNext >= m_items.size() || Takeable(); });
                if (m_bStop || m_nNext >= m_items.size())
                    return;
                i = m_nNext++;
            }
            Do(i);
        }
    }
    void Do(uint32_t i)
    {
        SItem& item = m_items[i];
        ILogSink* previous = SetThreadLogSink(&item.messages);
        try
        {
            item.ok = m_work(i);
        }
        catch (...)
        {
            item.error = std::current_exception();
        }
        SetThreadLogSink(previous);
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            item.done = true;
        }
        m_changed.notify_all();
    }

    std::vector<SItem> m_items;
    const std::function<bool(uint32_t)>& m_work;
    const uint32_t m_nWindow;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    uint32_t m_nNext = 0;
    uint32_t m_nFinished = 0;
    bool m_bStop = false;
    std::vector<std::thread> m_helpers; // last: they start once everything above is ready
};
} // namespace

unsigned ResolveThreadCount(unsigned threads)
{
    if (threads == 0)
        threads = std::thread::hardware_concurrency();
    return threads ? threads : 1u;
}

bool RunInOrder(uint32_t count, unsigned threads, const std::function<bool(uint32_t)>& work,
                const std::function<void(uint32_t)>& before, const std::function<bool(uint32_t)>& after)
{
    threads = ResolveThreadCount(threads);
    if (threads > count)
        threads = count;
    if (threads <= 1)
    {
        for (uint32_t i = 0; i < count; ++i)
        {
            before(i);
            if (!work(i) || !after(i))
                return false;
        }
        return true;
    }

    CItemPool pool(count, threads, work); // its destructor stops and joins the helpers on any exit
    for (uint32_t k = 0; k < count; ++k)
    {
        SItem& item = pool.Await(k);
        before(k);
        item.messages.PassOn();
        if (item.error)
            std::rethrow_exception(item.error);
        if (!item.ok || !after(k))
            return false;
        pool.Finished(k);
    }
    return true;
}
