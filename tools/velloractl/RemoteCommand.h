#pragma once

#include "Command.h"

#include <QByteArray>
#include <QString>

namespace vl {

// remote rename|move|modify|delete: what another device does to the drive, applied the way the
// sync service would apply it here: to the cloud copy and to the local tree (files renamed,
// rewritten or removed in place, so that a running app's watcher sees the change).
class RemoteCommand : public Command {
public:
    QString name() const override { return QStringLiteral("remote"); }
    QString synopsis() const override;
    QString summary() const override;
    int run(ToolContext& context, Arguments& arguments) override;

private:
    int rename(ToolContext& context, const QString& path, const QString& newName);
    int move(ToolContext& context, const QString& path, const QString& folder);
    int modify(ToolContext& context, const QString& path, const QByteArray& content, bool append);
    int remove(ToolContext& context, const QString& path);
};

}  // namespace vl
