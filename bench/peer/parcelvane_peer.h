// parcelvane as the comparison harness drives it, through its public
// header only: what a host sees.
#ifndef PARCELVANE_BENCH_PEER_PARCELVANE_PEER_H
#define PARCELVANE_BENCH_PEER_PARCELVANE_PEER_H

#include <memory>

#include "bench/peer/peer_library.h"

namespace pv::bench {

enum class DataEntry {
  kOver,       // PvCreateDataObjectOver: the object refers to the host's bytes
  kDataArray,  // CreateDataArray: the object copies a byte array
};

std::unique_ptr<PeerLibrary> NewParcelvanePeer(DataEntry entry);

}  // namespace pv::bench

#endif  // PARCELVANE_BENCH_PEER_PARCELVANE_PEER_H
