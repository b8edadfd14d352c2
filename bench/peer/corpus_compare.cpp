// parcelvane against mimetic on the team's corpus of real messages: the
// same three tasks (parse and visit every entity's type; parse and decode
// every leaf; parse and read the subject and the sender mailboxes) over
// the whole corpus and over the corpus without its one message with a huge
// header, as MB/s and messages/s, medians of interleaved runs; then the
// peak memory with the whole corpus parsed and held, and the cost per part
// of messages made of many small parts.
//
//   parcelvane_corpus_compare [--quick] [--wall] [--runs=N] [--run-ms=N]
//                             [--corpus=DIR] [--only=zero-copy|copying|mimetic]
//
// The corpus is PARCELVANE_SHARED_DIR/corpus (every *.eml) unless --corpus
// names another folder. --quick takes 3 runs of about 30 ms each and skips
// the million-part message; --only runs one library (for a profiler);
// --wall times with the wall clock instead of the thread's CPU time.
#include <dirent.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bench/peer/mimetic_peer.h"
#include "bench/peer/parcelvane_peer.h"
#include "bench/peer/resident_memory.h"

namespace pv::bench {
namespace {

constexpr const char* kBigHeaderMessage = "mimekit-msg-stack-overflow.eml";

struct Options {
  bool quick = false;
  int runs = 7;
  double runSeconds = 0.25;
  int smallPartRuns = 3;
  std::string only;  // one library's name, for profiling it alone
  std::string corpus = std::string(PARCELVANE_SHARED_DIR) + "/corpus";
};

struct Message {
  std::string name;
  std::string bytes;
};

std::vector<Message> LoadCorpus(const std::string& dir) {
  std::vector<Message> messages;
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
            [](const Message& a, const Message& b) { return a.name < b.name; });
  return messages;
}

struct MessageSet {
  std::string label;
  std::vector<std::string_view> messages;
  size_t bytes = 0;
};

MessageSet SetOf(std::string label, const std::vector<Message>& corpus, const char* without) {
  MessageSet set{std::move(label), {}, 0};
  for (const Message& m : corpus) {
    if (without != nullptr && m.name == without) continue;
    set.messages.push_back(m.bytes);
    set.bytes += m.bytes.size();
  }
  return set;
}

std::string LoadAverage() {
  std::ifstream in("/proc/loadavg");
  std::string line;
  std::getline(in, line);
  return line;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  size_t n = values.size();
  return n == 0 ? 0 : (n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2);
}

// Times are the measuring thread's CPU time unless --wall is given: on a
// machine shared with other work, time spent waiting for a core is theirs.
bool useWallClock = false;

double Now() {
  timespec t;
  clock_gettime(useWallClock ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

double SecondsSince(double start) { return Now() - start; }

const char* TaskName(Task task) {
  switch (task) {
    case Task::kParse:
      return "parse";
    case Task::kDecode:
      return "parse + decode";
    case Task::kHeaders:
      return "parse + headers";
  }
  return "";
}

// ---------------------------------------------------------------- throughput
struct Throughput {
  double mbPerSecond = 0;
  double messagesPerSecond = 0;
  double overLast = 0;  // the median, over the runs, of this library's speed over the last library's
  size_t tally = 0;
};

// Each library runs the task enough times in a row to fill about
// `runSeconds`; the runs alternate between the libraries, the first
// library changing from run to run, so that a change of load touches all.
std::vector<Throughput> Measure(std::vector<std::unique_ptr<PeerLibrary>>& libraries, const MessageSet& set,
                                Task task, const Options& options) {
  size_t count = libraries.size();
  std::vector<int> passes(count, 1);
  std::vector<Throughput> results(count);
  for (size_t l = 0; l < count; ++l) {
    double start = Now();
    results[l].tally = libraries[l]->Run(task);
    double once = std::max(SecondsSince(start), 1e-6);
    passes[l] = std::max(1, static_cast<int>(options.runSeconds / once));
  }
  std::vector<std::vector<double>> seconds(count);
  for (int run = 0; run < options.runs; ++run) {
    for (size_t k = 0; k < count; ++k) {
      size_t l = (static_cast<size_t>(run) + k) % count;
      size_t tally = 0;
      double start = Now();
      for (int p = 0; p < passes[l]; ++p) tally += libraries[l]->Run(task);
      seconds[l].push_back(SecondsSince(start) / passes[l]);
      if (tally != results[l].tally * static_cast<size_t>(passes[l]))
        std::fprintf(stderr, "warning: %s gave another tally\n", libraries[l]->Name());
    }
  }
  for (size_t l = 0; l < count; ++l) {
    std::vector<double> ratios;
    for (int run = 0; run < options.runs; ++run) ratios.push_back(seconds.back()[run] / seconds[l][run]);
    results[l].overLast = Median(ratios);
    double perPass = Median(seconds[l]);
    results[l].mbPerSecond = static_cast<double>(set.bytes) / 1e6 / perPass;
    results[l].messagesPerSecond = static_cast<double>(set.messages.size()) / perPass;
  }
  return results;
}

void ReportThroughput(std::vector<std::unique_ptr<PeerLibrary>>& libraries,
                      const std::vector<MessageSet>& sets, const Options& options) {
  std::printf(
      "\n## Throughput (%s time; MB/s and messages/s: medians of %d interleaved runs; "
      "ratios: medians of the runs' ratios; 1 MB = 10^6 bytes)\n\n",
      useWallClock ? "wall-clock" : "CPU", options.runs);
  std::printf("| corpus | task |");
  for (auto& library : libraries) std::printf(" %s MB/s | msg/s |", library->Name());
  // The ratios need the two parcelvane entries first and the peer last.
  bool ratios = libraries.size() == 3;
  if (ratios) std::printf(" zero-copy / mimetic | copying / mimetic |");
  std::printf("\n|---|---|");
  for (size_t l = 0; l < libraries.size(); ++l) std::printf("---:|---:|");
  std::printf(ratios ? "---:|---:|\n" : "\n");
  std::vector<std::string> tallies;
  for (const MessageSet& set : sets) {
    for (auto& library : libraries) library->Prepare(set.messages);
    for (Task task : {Task::kParse, Task::kDecode, Task::kHeaders}) {
      std::vector<Throughput> r = Measure(libraries, set, task, options);
      std::printf("| %s | %s |", set.label.c_str(), TaskName(task));
      for (const Throughput& t : r) std::printf(" %.0f | %.0f |", t.mbPerSecond, t.messagesPerSecond);
      if (ratios) std::printf(" %.2f× | %.2f× |", r[0].overLast, r[1].overLast);
      std::printf("\n");
      std::string line = set.label + " / " + TaskName(task) + ":";
      for (const Throughput& t : r) line += " " + std::to_string(t.tally);
      tallies.push_back(line);
    }
  }
  std::printf(
      "\nWhat each library read, per pass (entities visited; decoded bytes; subject and mailbox "
      "characters), in the order of the columns:\n\n");
  for (const std::string& line : tallies) std::printf("    %s\n", line.c_str());
}

// ---------------------------------------------------------------- memory
void ReportCorpusMemory(std::vector<std::unique_ptr<PeerLibrary>>& libraries, const MessageSet& set) {
  std::printf("\n## Peak memory with %s parsed and held (%zu messages, %.2f MB)\n\n", set.label.c_str(),
              set.messages.size(), static_cast<double>(set.bytes) / 1e6);
  std::printf("| library | peak over the start (MB) | × corpus |\n|---|---:|---:|\n");
  for (auto& library : libraries) {
    library->Prepare(set.messages);
    ChildFigures f = InChild([&] {
      ChildFigures out;
      long before = StatusKb("VmRSS:");
      ResetPeak();
      library->ParseAndHold();
      out.values[0] = static_cast<double>(StatusKb("VmHWM:") - before) * 1024.0;
      return out;
    });
    if (!f.ok) {
      std::printf("| %s | failed | |\n", library->Name());
      continue;
    }
    std::printf("| %s | %.2f | %.2f× |\n", library->Name(), f.values[0] / 1e6,
                f.values[0] / static_cast<double>(set.bytes));
  }
}

// A multipart/mixed message of `parts` small text parts.
std::string ManySmallParts(size_t parts) {
  std::string m =
      "From: Sender <sender@example.com>\r\nTo: rcpt@example.com\r\nSubject: many parts\r\n"
      "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"b1\"\r\n\r\n";
  m.reserve(m.size() + parts * 64);
  for (size_t i = 0; i < parts; ++i) {
    m += "--b1\r\nContent-Type: text/plain\r\n\r\npart ";
    m += std::to_string(i);
    m += "\r\n";
  }
  m += "--b1--\r\n";
  return m;
}

// Per part: the parse task's time (parse, visit every part's type, release),
// the time to parse and hold, and the peak memory while held.
void ReportSmallParts(std::vector<std::unique_ptr<PeerLibrary>>& libraries, const Options& options) {
  std::vector<size_t> sizes{100000};
  if (!options.quick) sizes.push_back(1000000);
  std::printf(
      "\n## Messages of many small parts (one process per library; the parse task: median of %d runs)\n\n",
      options.smallPartRuns);
  std::printf(
      "| parts | message MB | library | parse task µs/part | parse and hold µs/part | "
      "peak bytes/part |\n|---:|---:|---|---:|---:|---:|\n");
  for (size_t parts : sizes) {
    std::string message = ManySmallParts(parts);
    std::vector<std::string_view> one{message};
    for (auto& library : libraries) {
      library->Prepare(one);
      ChildFigures f = InChild([&] {
        // The held parse first, while the allocator holds nothing freed
        // that it could reuse.
        ChildFigures out;
        long before = StatusKb("VmRSS:");
        ResetPeak();
        double start = Now();
        library->ParseAndHold();
        out.values[1] = SecondsSince(start);
        out.values[2] = static_cast<double>(StatusKb("VmHWM:") - before) * 1024.0;
        library->Release();
        std::vector<double> seconds;
        for (int run = 0; run < options.smallPartRuns; ++run) {
          start = Now();
          out.values[3] = static_cast<double>(library->Run(Task::kParse));
          seconds.push_back(SecondsSince(start));
        }
        out.values[0] = Median(seconds);
        return out;
      });
      if (!f.ok) {
        std::printf("| %zu | | %s | failed | | |\n", parts, library->Name());
        continue;
      }
      double n = static_cast<double>(parts);
      std::printf("| %zu | %.1f | %s | %.2f | %.2f | %.0f |\n", parts,
                  static_cast<double>(message.size()) / 1e6, library->Name(), f.values[0] * 1e6 / n,
                  f.values[1] * 1e6 / n, f.values[2] / n);
    }
  }
}

bool ParseOptions(int argc, char** argv, Options* options) {
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--quick") {
      options->quick = true;
      options->runs = 3;
      options->runSeconds = 0.03;
      options->smallPartRuns = 1;
    } else if (arg == "--wall") {
      useWallClock = true;
    } else if (arg.rfind("--runs=", 0) == 0) {
      options->runs = std::max(1, std::atoi(arg.c_str() + 7));
    } else if (arg.rfind("--run-ms=", 0) == 0) {
      options->runSeconds = std::max(1, std::atoi(arg.c_str() + 9)) / 1000.0;
    } else if (arg.rfind("--corpus=", 0) == 0) {
      options->corpus = arg.substr(9);
    } else if (arg == "--only=zero-copy" || arg == "--only=copying" || arg == "--only=mimetic") {
      options->only = arg.substr(7);
    } else {
      std::fprintf(stderr,
                   "usage: %s [--quick] [--wall] [--runs=N] [--run-ms=N] [--corpus=DIR] "
                   "[--only=zero-copy|copying|mimetic]\n",
                   argv[0]);
      return false;
    }
  }
  return true;
}

int Main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, &options)) return 2;
  std::printf("# parcelvane against mimetic%s\n\nload at start: %s\n", options.quick ? " (quick)" : "",
              LoadAverage().c_str());

  std::vector<std::unique_ptr<PeerLibrary>> libraries;
  if (options.only.empty() || options.only == "zero-copy")
    libraries.push_back(NewParcelvanePeer(DataEntry::kOver));
  if (options.only.empty() || options.only == "copying")
    libraries.push_back(NewParcelvanePeer(DataEntry::kDataArray));
  if (options.only.empty() || options.only == "mimetic") libraries.push_back(NewMimeticPeer());

  std::vector<Message> corpus = LoadCorpus(options.corpus);
  if (corpus.empty()) {
    std::printf("\nno *.eml in %s: corpus figures skipped\n", options.corpus.c_str());
  } else {
    std::vector<MessageSet> sets;
    sets.push_back(SetOf("corpus", corpus, nullptr));
    sets.push_back(SetOf(std::string("without ") + kBigHeaderMessage, corpus, kBigHeaderMessage));
    std::printf("\n| corpus | messages | MB |\n|---|---:|---:|\n");
    for (const MessageSet& set : sets) {
      std::printf("| %s | %zu | %.2f |\n", set.label.c_str(), set.messages.size(),
                  static_cast<double>(set.bytes) / 1e6);
    }
    ReportThroughput(libraries, sets, options);
    ReportCorpusMemory(libraries, sets.front());
  }
  ReportSmallParts(libraries, options);
  std::printf("\nload at end: %s\n", LoadAverage().c_str());
  return 0;
}

}  // namespace
}  // namespace pv::bench

int main(int argc, char** argv) { return pv::bench::Main(argc, argv); }
