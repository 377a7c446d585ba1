#pragma once

#include <QtGlobal>

#include <optional>

namespace vl {

// Who is at the other end of a local (Unix domain) socket, as the kernel recorded it when the
// peer connected; nothing the peer says can change it.
class PeerCredentials {
public:
    PeerCredentials() = delete;

    // The user id of the peer of the connected socket `descriptor`; absent when the kernel
    // can't tell (not a local socket, already closed).
    static std::optional<quint32> userOf(qintptr descriptor);
    // The user this process runs as.
    static quint32 currentUser();
    // Whether the peer runs as the user this process runs as.
    static bool isSameUser(qintptr descriptor);
};

}  // namespace vl
