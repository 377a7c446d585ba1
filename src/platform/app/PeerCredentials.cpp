#include "platform/app/PeerCredentials.h"

#include <sys/socket.h>
#include <unistd.h>

namespace vl {

std::optional<quint32> PeerCredentials::userOf(qintptr descriptor) {
    struct ucred credentials {};
    socklen_t length = sizeof credentials;
    if (descriptor < 0 ||
        ::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_PEERCRED, &credentials,
                     &length) != 0 ||
        length != sizeof credentials) {
        return std::nullopt;
    }
    return credentials.uid;
}

quint32 PeerCredentials::currentUser() {
    return ::getuid();
}

bool PeerCredentials::isSameUser(qintptr descriptor) {
    const std::optional<quint32> user = userOf(descriptor);
    return user && *user == ::getuid();
}

}  // namespace vl
