#pragma once

#include <QApplication>
#include <QBuffer>
#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QString>

#include <cmath>
#include <optional>

namespace vl::test {

// Files of each kind the quick preview renders, made on the spot.
struct PreviewFiles {
    // Runs the event loop until `done` answers true or the time is up; answers `done`.
    template <typename Done>
    static bool waitFor(Done done, int milliseconds = 10000) {
        QDeadlineTimer deadline(milliseconds);
        while (!done() && !deadline.hasExpired()) {
            QApplication::processEvents(QEventLoop::AllEvents, 20);
        }
        return done();
    }

    static bool write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }

    // Left half red, right half blue.
    static QImage halves(QSize size) {
        QImage image(size, QImage::Format_RGB32);
        QPainter painter(&image);
        painter.fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
        painter.fillRect(size.width() / 2, 0, size.width() - size.width() / 2, size.height(),
                         Qt::blue);
        return image;
    }

    // A JPEG with an EXIF block whose orientation tag is `orientation` (6: turn 90° clockwise).
    static QByteArray jpeg(const QImage& image, std::optional<quint16> orientation = {}) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "JPEG", 95);
        if (!orientation) {
            return bytes;
        }
        // TIFF header (little-endian), one IFD with the orientation entry, no next IFD.
        QByteArray tiff("II*\0\x08\0\0\0", 8);
        const char entry[] = {1, 0, 0x12, 0x01, 3, 0, 1, 0, 0, 0};
        tiff.append(entry, sizeof entry);
        tiff.append(char(*orientation & 0xff)).append(char(*orientation >> 8));
        tiff.append(QByteArray(6, '\0'));
        const QByteArray payload = QByteArray("Exif\0\0", 6) + tiff;
        const int length = payload.size() + 2;
        QByteArray segment("\xff\xe1", 2);
        segment.append(char(length >> 8)).append(char(length & 0xff)).append(payload);
        return bytes.left(2) + segment + bytes.mid(2);
    }

    static bool pdf(const QString& path, int pages) {
        QPdfWriter writer(path);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setResolution(72);
        QPainter painter(&writer);
        if (!painter.isActive()) {
            return false;
        }
        QFont font = painter.font();
        font.setPointSize(40);
        painter.setFont(font);
        for (int page = 0; page < pages; ++page) {
            if (page > 0) {
                writer.newPage();
            }
            painter.fillRect(QRect(40, 40, 300, 200), QColor(0x20, 0x60, 0xc0));
            painter.drawText(QPoint(60, 320), QStringLiteral("Page %1").arg(page + 1));
        }
        return true;
    }

    // 16-bit mono PCM, a 440 Hz tone.
    static QByteArray wav(double seconds) {
        const int rate = 22050;
        const int samples = int(seconds * rate);
        QByteArray data;
        for (int i = 0; i < samples; ++i) {
            const auto value = qint16(8000 * std::sin(2 * M_PI * 440 * i / rate));
            data.append(char(value & 0xff)).append(char((value >> 8) & 0xff));
        }
        const auto le32 = [](quint32 v) {
            const char b[] = {char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
            return QByteArray(b, 4);
        };
        const auto le16 = [](quint16 v) {
            const char b[] = {char(v), char(v >> 8)};
            return QByteArray(b, 2);
        };
        return "RIFF" + le32(36 + data.size()) + "WAVEfmt " + le32(16) + le16(1) + le16(1) +
               le32(rate) + le32(rate * 2) + le16(2) + le16(16) + "data" + le32(data.size()) + data;
    }
};

}  // namespace vl::test
