#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

// Every test process gets its own XDG tree so that no test reads or writes the user's
// configuration, data, cache or log; a test that starts this binary again as a child process
// passes its tree on through VELLORA_TEST_XDG. Widget tests run on the offscreen platform.
int main(int argc, char** argv) {
    QTemporaryDir ownTree(QDir::tempPath() + QStringLiteral("/vellora-tests-XXXXXX"));
    QString root = qEnvironmentVariable("VELLORA_TEST_XDG");
    if (root.isEmpty()) {
        if (!ownTree.isValid()) {
            return 2;
        }
        root = ownTree.path();
        qputenv("VELLORA_TEST_XDG", root.toLocal8Bit());
    }
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
                             "XDG_RUNTIME_DIR"}) {
        const QByteArray dir = (root + QLatin1Char('/') + QLatin1String(name)).toLocal8Bit();
        QDir().mkpath(QString::fromLocal8Bit(dir));
        qputenv(name, dir);
    }
    QFile::setPermissions(root + QStringLiteral("/XDG_RUNTIME_DIR"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Vellora"));
    QApplication::setApplicationName(QStringLiteral("VelloraTests"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
