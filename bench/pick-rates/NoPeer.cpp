#include "Peer.h"

namespace lumora::bench
{

std::unique_ptr<Peer> MakePeer()
{
    return nullptr;
}

} // namespace lumora::bench
