// The names a shared library exports (nm -D) and the lines of an export list.
#pragma once

#include <cstdio>
#include <fstream>
#include <set>
#include <string>

inline std::set<std::string> read_lines(const std::string& path) {
    std::set<std::string> out;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) out.insert(line);
    return out;
}

inline std::set<std::string> dynamic_symbols(const std::string& so) {
    std::set<std::string> out;
    FILE* p = popen(("nm -D --defined-only '" + so + "'").c_str(), "r");
    char line[1024], addr[64], type[8], name[900];
    while (p && fgets(line, sizeof line, p))
        if (sscanf(line, "%63s %7s %899s", addr, type, name) == 3) out.insert(name);
    if (p) pclose(p);
    return out;
}
