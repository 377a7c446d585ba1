#pragma once

#include <QString>

#include <cstdint>

// The system log service: client connections with a level filter, records of string keys and
// values, send. The transport writes one JSON object per record per line to
// $XDG_STATE_HOME/com.tessaly.VelloraApp/system.log (default ~/.local/state), keeps the keys and
// values exactly as set, applies a per-process rate quota unless the environment variable
// "SLS_QUOTA_DISABLED" is set, and mirrors records to journald when its socket exists.

namespace vl::SystemLogService {

struct ClientHandle;
struct MessageHandle;
using Client = ClientHandle*;
using Message = MessageHandle*;

// Bit n of a filter passes level n.
constexpr uint32_t filterUpTo(int level) {
    return level < 0 ? 0u : (level >= 31 ? 0xffffffffu : ((1u << (level + 1)) - 1u));
}

Client open(const char* ident, const char* facility, uint32_t options);
void setFilter(Client client, uint32_t mask);
uint32_t filter(Client client);
Message newMessage();
void setValue(Message message, const char* key, const QString& value);
void send(Client client, Message message);
void release(Message message);
void close(Client client);

// Where records go; tests point it at a file of their own.
QString logFilePath();
void setLogFilePath(const QString& path);

}  // namespace vl::SystemLogService
