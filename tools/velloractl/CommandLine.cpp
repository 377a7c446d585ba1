#include "CommandLine.h"

#include "Arguments.h"
#include "ContainerCommand.h"
#include "EvictCommand.h"
#include "ImportCommand.h"
#include "NetworkCommand.h"
#include "QuotaCommand.h"
#include "ReclaimCommand.h"
#include "RemoteCommand.h"
#include "SeedDemoCommand.h"
#include "SigninCommand.h"
#include "SignoutCommand.h"
#include "StatusCommand.h"
#include "TagsCommand.h"
#include "ThrottleCommand.h"
#include "ToolContext.h"
#include "drive/store/RecordFile.h"

#include <cstdio>

namespace vl {

CommandLine::CommandLine() {
    commands_.push_back(std::make_unique<SigninCommand>());
    commands_.push_back(std::make_unique<SignoutCommand>());
    commands_.push_back(std::make_unique<ContainerCommand>());
    commands_.push_back(std::make_unique<ImportCommand>());
    commands_.push_back(std::make_unique<RemoteCommand>());
    commands_.push_back(std::make_unique<EvictCommand>());
    commands_.push_back(std::make_unique<ReclaimCommand>());
    commands_.push_back(std::make_unique<NetworkCommand>());
    commands_.push_back(std::make_unique<QuotaCommand>());
    commands_.push_back(std::make_unique<TagsCommand>());
    commands_.push_back(std::make_unique<ThrottleCommand>());
    commands_.push_back(std::make_unique<StatusCommand>());
    commands_.push_back(std::make_unique<SeedDemoCommand>());
}

QString CommandLine::help() const {
    QString text = QStringLiteral(
        "Usage: velloractl COMMAND [ARGUMENTS]\n"
        "\n"
        "Plays the cloud side of the Vellora drive: the account, containers, items made on other\n"
        "devices, network state, quota and tags. The drive home is $VELLORA_HOME, else\n"
        "$XDG_DATA_HOME/vellora (~/.local/share/vellora). DRIVE-PATH is a path inside the drive,\n"
        "such as \"Documents/Report.pdf\".\n"
        "\n"
        "Commands:\n");
    for (const auto& command : commands_) {
        for (const QString& line : command->synopsis().split(QLatin1Char('\n'))) {
            text += QStringLiteral("  velloractl ") + line + QLatin1Char('\n');
        }
        text += QStringLiteral("      ") + command->summary() + QLatin1Char('\n');
    }
    text += QStringLiteral("  velloractl --help\n      Show this help.\n");
    return text;
}

int CommandLine::run(const QStringList& arguments) {
    if (arguments.isEmpty()) {
        return ToolContext(DriveHome::defaultPath()).usageError(QStringLiteral("no command given"));
    }
    const QString name = arguments.first();
    if (name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help")) {
        std::fputs(help().toLocal8Bit().constData(), stdout);
        return 0;
    }
    ToolContext context(DriveHome::defaultPath());
    for (const auto& command : commands_) {
        if (command->name() == name) {
            Arguments rest(arguments.mid(1));
            if (rest.takeFlag(QStringLiteral("help"))) {
                std::printf("Usage:\n");
                for (const QString& line : command->synopsis().split(QLatin1Char('\n'))) {
                    std::printf("  velloractl %s\n", line.toLocal8Bit().constData());
                }
                std::printf("%s\n", command->summary().toLocal8Bit().constData());
                return 0;
            }
            const int status = command->run(context, rest);
            // Nothing the command replaced is lost, but it must not go unseen either.
            for (const QString& aside : RecordFile::takeKeptAside()) {
                context.fail(QStringLiteral("an unreadable record was kept aside as ") + aside);
            }
            return status;
        }
    }
    return context.usageError(QStringLiteral("unknown command \"") + name + QLatin1Char('"'));
}

}  // namespace vl
