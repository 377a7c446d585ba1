#pragma once

#include <QObject>

namespace vl {

// Posts the platform's became-active and will-resign-active notifications from Qt's application
// state: becoming Qt::ApplicationActive is "became active", leaving it is "will resign active".
class ApplicationStateBridge : public QObject {
    Q_OBJECT
public:
    // Installs the bridge on the running QGuiApplication (once; later calls do nothing).
    static void install();

    explicit ApplicationStateBridge(QObject* parent = nullptr);
    void applicationStateChanged(Qt::ApplicationState state);

private:
    bool active_ = false;  // main thread only
};

}  // namespace vl
