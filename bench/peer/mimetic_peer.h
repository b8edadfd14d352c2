// mimetic 0.9.8 doing the comparison harness's three tasks.
#ifndef PARCELVANE_BENCH_PEER_MIMETIC_PEER_H
#define PARCELVANE_BENCH_PEER_MIMETIC_PEER_H

#include <memory>

#include "bench/peer/peer_library.h"

namespace pv::bench {

std::unique_ptr<PeerLibrary> NewMimeticPeer();

}  // namespace pv::bench

#endif  // PARCELVANE_BENCH_PEER_MIMETIC_PEER_H
