// The team's corpus of real messages for the benchmarks: every *.eml of a
// folder, sorted by name; none when the folder is absent.
#ifndef PARCELVANE_BENCH_CORPUS_H
#define PARCELVANE_BENCH_CORPUS_H

#include <dirent.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace pv::bench {

struct CorpusMessage {
  std::string name;
  std::string bytes;
};

inline std::vector<CorpusMessage> LoadCorpus(const std::string& dir) {
  std::vector<CorpusMessage> messages;
  DIR* d = opendir(dir.c_str());
  if (d == nullptr) return messages;
  while (dirent* entry = readdir(d)) {
    std::string name = entry->d_name;
    if (name.size() < 4 || name.compare(name.size() - 4, 4, ".eml") != 0) continue;
    std::ifstream in(dir + "/" + name, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    messages.push_back({name, bytes.str()});
  }
  closedir(d);
  std::sort(messages.begin(), messages.end(),
            [](const CorpusMessage& a, const CorpusMessage& b) { return a.name < b.name; });
  return messages;
}

}  // namespace pv::bench

#endif  // PARCELVANE_BENCH_CORPUS_H
