#include "bench/load/ProxyUse.h"

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "bench/load/Options.h"

namespace bench {

std::set<pid_t> ProxyProcesses() {
    std::multimap<pid_t, pid_t> children;
    if (DIR* d = opendir("/proc")) {
        while (dirent* e = readdir(d)) {
            pid_t pid = atoi(e->d_name);
            if (pid <= 0) continue;
            std::ifstream f("/proc/" + std::to_string(pid) + "/stat");
            std::string line;
            std::getline(f, line);
            std::size_t at = line.rfind(')');
            char state;
            pid_t parent;
            if (at != std::string::npos && sscanf(line.c_str() + at + 1, " %c %d", &state, &parent) == 2)
                children.emplace(parent, pid);
        }
        closedir(d);
    }
    std::set<pid_t> all;
    std::vector<pid_t> todo = options.proxyPids;
    while (!todo.empty()) {
        pid_t p = todo.back();
        todo.pop_back();
        if (!all.insert(p).second) continue;
        auto [from, to] = children.equal_range(p);
        for (auto it = from; it != to; ++it) todo.push_back(it->second);
    }
    return all;
}

double ProxyCpuSeconds() {
    double ticks = 0;
    for (pid_t pid : ProxyProcesses()) {
        std::ifstream f("/proc/" + std::to_string(pid) + "/stat");
        std::string line;
        std::getline(f, line);
        std::size_t at = line.rfind(')');
        if (at == std::string::npos) continue;
        std::istringstream fields(line.substr(at + 2));
        std::string skip;
        for (int i = 0; i < 11; ++i) fields >> skip;
        double user = 0, sys = 0, cuser = 0, csys = 0;
        fields >> user >> sys >> cuser >> csys;
        ticks += user + sys + cuser + csys;
    }
    return ticks / double(sysconf(_SC_CLK_TCK));
}

double ProxyMemoryKb() {
    double kb = 0;
    for (pid_t pid : ProxyProcesses()) {
        std::ifstream f("/proc/" + std::to_string(pid) + "/smaps_rollup");
        std::string line;
        while (std::getline(f, line))
            if (line.rfind("Pss:", 0) == 0) kb += atof(line.c_str() + 4);
    }
    return kb;
}

double ResidentKb(const std::set<pid_t>& pids) {
    double kb = 0;
    for (pid_t pid : pids) {
        std::ifstream f("/proc/" + std::to_string(pid) + "/statm");
        double size = 0, resident = 0;
        f >> size >> resident;
        kb += resident * 4;
    }
    return kb;
}

}  // namespace bench
