// Known-answer files of tests/data/stats: lines of a tag and numbers; a line
// "case n p" starts a case, and tags before the first case belong to the file.
#pragma once

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace kat {

using Rows = std::map<std::string, std::vector<double>>;
struct Case { int64_t n = 0, p = 0; Rows rows; };
struct File { Rows head; std::vector<Case> cases; };

inline File read(const std::string& name) {
    std::ifstream in(ORV_SS_DATA_DIR "/" + name);
    File f;
    for (std::string line; std::getline(in, line);) {
        std::istringstream ls(line);
        std::string tag;
        ls >> tag;
        if (tag.empty() || tag[0] == '#') continue;
        if (tag == "case") {
            f.cases.emplace_back();
            ls >> f.cases.back().n >> f.cases.back().p;
            continue;
        }
        auto& into = f.cases.empty() ? f.head[tag] : f.cases.back().rows[tag];
        for (double v; ls >> v;) into.push_back(v);
    }
    return f;
}

}  // namespace kat
