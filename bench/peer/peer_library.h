// One mail library as the comparison harness drives it: the same three
// tasks over a set of messages held in memory, and a parse that keeps its
// results for the memory measurement.
#ifndef PARCELVANE_BENCH_PEER_PEER_LIBRARY_H
#define PARCELVANE_BENCH_PEER_PEER_LIBRARY_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace pv::bench {

enum class Task {
  kParse,    // parse, then visit every entity reading its type and subtype
  kDecode,   // parse, then decode every leaf's body
  kHeaders,  // parse, then read the decoded subject and every sender mailbox
};

// Where the tasks put what they read and do not count, so that reading it
// cannot be optimized away.
inline volatile size_t readSink = 0;

class PeerLibrary {
 public:
  virtual ~PeerLibrary() = default;
  virtual const char* Name() const = 0;
  // Takes the messages the following calls work on; what a host would hold
  // before it calls the library (the bytes stay owned by the caller).
  virtual void Prepare(const std::vector<std::string_view>& messages) = 0;
  // Runs a task once over every prepared message, releasing each result
  // before the next message. Returns a tally of what was read (entities
  // visited, decoded bytes, header characters), so that the libraries can
  // be compared on the work they did.
  virtual size_t Run(Task task) = 0;
  // Parses every prepared message and keeps the results until Release.
  virtual void ParseAndHold() = 0;
  virtual void Release() = 0;
};

}  // namespace pv::bench

#endif  // PARCELVANE_BENCH_PEER_PEER_LIBRARY_H
