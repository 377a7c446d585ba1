#pragma once

#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QMap>
#include <QThread>

namespace vl::test {

// The desktop's applications for a test binary of their own: desktop entries and mimeapps.list
// in this process's temporary XDG tree, and XDG_DATA_DIRS pointing there alone (with the system's
// MIME database linked in), set before GIO reads anything, so no installed application leaks in.
// Every application runs a script that appends its name and arguments to launches.txt.
//
//   text/plain        Notes (%U, the user's default), Editor (%f), Console (a terminal)
//   application/json  Console (the user's default, a terminal), Editor
//   application/zip          Console alone
//   image/png         Photo Viewer (%f)
//   application/pdf   Launcher (no document on its command line)
//   application/vnd.oasis.opendocument.text   this app itself
//   inode/directory   Files (%U)
class DesktopAppsEnvironment : public ::testing::Environment {
public:
    static QString root() { return qEnvironmentVariable("VELLORA_TEST_XDG") + "/apps"; }
    static QString applicationsDir() { return root() + "/data/applications"; }
    static QString launchesPath() { return root() + "/launches.txt"; }
    static QString binDir() { return root() + "/bin"; }

    void SetUp() override {
        QDir().mkpath(applicationsDir());
        QDir().mkpath(binDir());
        QDir().mkpath(root() + "/config-dirs");
        QFile::link(QStringLiteral("/usr/share/mime"), root() + "/data/mime");
        qputenv("XDG_DATA_DIRS", (root() + "/data").toLocal8Bit());
        qputenv("XDG_CONFIG_DIRS", (root() + "/config-dirs").toLocal8Bit());
        qunsetenv("XDG_CURRENT_DESKTOP");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");

        writeScript(
            root() + "/record-launch",
            "#!/bin/sh\nprintf '%s\\n' \"$*\" >> \"$VELLORA_TEST_XDG/apps/launches.txt\"\n");
        const QString record = root() + "/record-launch";
        entry("org.example.Notes", "Notes", record + " Notes %U", "text/plain;",
              "Comment=Quick notes\nIcon=accessories-text-editor\nX-AppVersion=2.1\n");
        entry("org.example.Editor", "Editor", record + " Editor %f",
              "text/plain;application/json;");
        entry("org.example.Console", "Console", record + " Console %f",
              "text/plain;application/json;application/zip;", "Terminal=true\n");
        entry("org.example.Viewer", "Photo Viewer", record + " Viewer %f", "image/png;");
        entry("org.example.Launcher", "Launcher", record + " Launcher", "application/pdf;");
        entry("com.tessaly.VelloraApp", "Vellora", record + " Vellora %u",
              "application/vnd.oasis.opendocument.text;");
        entry("org.example.Files", "Files", record + " Files %U", "inode/directory;");
        // GIO learns which application takes which type from the cache that
        // update-desktop-database writes beside the entries, not from the entries themselves.
        QFile cache(applicationsDir() + "/mimeinfo.cache");
        ASSERT_TRUE(cache.open(QIODevice::WriteOnly));
        cache.write("[MIME Cache]\n");
        for (auto it = registrations_.cbegin(); it != registrations_.cend(); ++it) {
            cache.write((it.key() + '=' + it.value().join(';') + ";\n").toUtf8());
        }
        cache.close();
        QFile list(qEnvironmentVariable("XDG_CONFIG_HOME") + "/mimeapps.list");
        ASSERT_TRUE(list.open(QIODevice::WriteOnly));
        list.write(
            "[Default Applications]\ntext/plain=org.example.Notes.desktop\n"
            "application/json=org.example.Console.desktop\n");
    }

    // The lines of launches.txt once there are `count` of them, or when the time is up.
    static QStringList waitForLaunches(int count, int milliseconds = 5000) {
        QDeadlineTimer deadline(milliseconds);
        QStringList lines;
        while (!deadline.hasExpired()) {
            QCoreApplication::processEvents();
            QFile file(launchesPath());
            if (file.open(QIODevice::ReadOnly)) {
                lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
                if (lines.size() >= count) {
                    break;
                }
            }
            QThread::msleep(10);
        }
        return lines;
    }

private:
    static void writeScript(const QString& path, const char* text) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void entry(const char* id, const char* name, const QString& exec, const char* types,
               const char* more = "") {
        QFile file(applicationsDir() + "/" + id + ".desktop");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n"
                                  "MimeType=%3\n%4")
                       .arg(QLatin1String(name), exec, QLatin1String(types), QLatin1String(more))
                       .toUtf8());
        for (const QString& type : QString::fromLatin1(types).split(';', Qt::SkipEmptyParts)) {
            registrations_[type].append(QString::fromLatin1(id) + ".desktop");
        }
    }

    QMap<QString, QStringList> registrations_;
};

}  // namespace vl::test
