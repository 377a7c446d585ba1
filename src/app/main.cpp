#include "app/ApplicationMain.h"
#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"

#include <QString>

int main(int argc, char** argv) {
    VLLOG(6, "Running %s", argv[0]);
    VLLOG(6, "Built (main) on %s @ %s", __DATE__, __TIME__);

    const QString path = QString::fromLocal8Bit(argv[0]);
    vl::FileUtils::logFileAttributes(path);

    return vl::ApplicationMain::run(argc, argv);
}
