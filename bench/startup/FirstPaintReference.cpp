// The reference of the cold-start benchmark: about the least a Qt Widgets program does before
// its first paint, one window as large as the screen with one line of text. After that paint it
// prints the wall-clock time in nanoseconds since the epoch, and quits.
#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>

namespace {

class PaintedWindow : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("Painted"));
        if (!painted_) {
            painted_ = true;
            // Timed where the app times its first paint: on the next turn of the event loop.
            QTimer::singleShot(0, [] {
                timespec now = {};
                clock_gettime(CLOCK_REALTIME, &now);
                std::printf("%lld%09ld\n", static_cast<long long>(now.tv_sec), now.tv_nsec);
                std::fflush(stdout);
                QApplication::quit();
            });
        }
    }

private:
    bool painted_ = false;
};

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    PaintedWindow window;
    window.setGeometry(QGuiApplication::primaryScreen()->geometry());
    window.show();
    return QApplication::exec();
}
