#include "BatchExport.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>

#include "QMXTString.h"

namespace
{
struct SRunning
{
    const SBatchScene* scene;
    pid_t pid;
    int fd; // read end of the child's stderr
    std::string text;
};

std::string Stem(const std::string& path)
{
    const std::string base = QMXTStringGetFileName(path.c_str()).c_str();
    const size_t dot = base.rfind('.');
    return dot == std::string::npos || dot == 0 ? base : base.substr(0, dot);
}

// Forks one child whose stderr is a pipe to the parent. False (nothing started) when the system
// refuses a pipe or a process.
bool Start(const SBatchScene& scene, const std::function<int(const SBatchScene&)>& exportOne, SRunning& running)
{
    int fds[2];
    if (pipe(fds) != 0)
        return false;
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = fork();
    if (pid < 0)
    {
        close(fds[0]);
        close(fds[1]);
        return false;
    }
    if (pid == 0)
    {
        close(fds[0]);
        dup2(fds[1], STDERR_FILENO);
        close(fds[1]);
        const int code = exportOne(scene);
        std::fflush(stdout);
        std::fflush(stderr);
        _exit(code);
    }
    close(fds[1]);
    running = {&scene, pid, fds[0], ""};
    return true;
}

// Waits for the child and prints its block; true when it succeeded.
bool Finish(SRunning& running)
{
    close(running.fd);
    int status = 0;
    while (waitpid(running.pid, &status, 0) < 0 && errno == EINTR)
    {
    }
    std::fputs(running.text.c_str(), stderr);
    if (!running.text.empty() && running.text.back() != '\n')
        std::fputc('\n', stderr);
    if (WIFSIGNALED(status))
        std::fprintf(stderr, "ostrex: error: %s: the export stopped on signal %d (%s)\n",
                     running.scene->input.c_str(), WTERMSIG(status), strsignal(WTERMSIG(status)));
    std::fflush(stderr);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
} // namespace

bool PlanBatch(const std::vector<std::string>& inputs, const std::string& dir, const std::string& extension,
               std::vector<SBatchScene>& plan, std::string& error)
{
    plan.clear();
    std::map<std::string, std::string> taken; // output -> input
    const std::string folder = dir.back() == '/' ? dir : dir + "/";
    for (const std::string& input : inputs)
    {
        const std::string output = folder + Stem(input) + "." + extension;
        const auto [at, added] = taken.emplace(output, input);
        if (!added)
        {
            error = "'" + at->second + "' and '" + input + "' would both be written to '" + output + "'";
            return false;
        }
        plan.push_back({input, output});
    }
    return true;
}

int DefaultJobCount()
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? static_cast<int>(count) : 1;
}

int RunBatch(const std::vector<SBatchScene>& plan, int jobs, const std::function<int(const SBatchScene&)>& exportOne)
{
    std::deque<const SBatchScene*> waiting;
    for (const SBatchScene& scene : plan)
        waiting.push_back(&scene);
    std::vector<SRunning> running;
    int failed = 0;
    while (!waiting.empty() || !running.empty())
    {
        while (!waiting.empty() && static_cast<int>(running.size()) < jobs)
        {
            SRunning started;
            if (!Start(*waiting.front(), exportOne, started))
            {
                if (!running.empty())
                    break; // try again when a running child has ended
                std::fprintf(stderr, "ostrex: error: %s: no process could be started: %s\n",
                             waiting.front()->input.c_str(), std::strerror(errno));
                ++failed;
                waiting.pop_front();
                continue;
            }
            running.push_back(std::move(started));
            waiting.pop_front();
        }
        if (running.empty())
            continue;
        std::vector<pollfd> fds;
        for (const SRunning& r : running)
            fds.push_back({r.fd, POLLIN, 0});
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR)
            return failed + static_cast<int>(running.size() + waiting.size());
        for (size_t i = fds.size(); i-- > 0;)
        {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            char buffer[4096];
            const ssize_t n = read(running[i].fd, buffer, sizeof buffer);
            if (n > 0)
            {
                running[i].text.append(buffer, static_cast<size_t>(n));
                continue;
            }
            if (n < 0 && errno == EINTR)
                continue;
            if (!Finish(running[i]))
                ++failed;
            running.erase(running.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    return failed;
}
