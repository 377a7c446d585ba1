#include "DemoMedia.h"

#include "MjpegAviWriter.h"
#include "StoredZipWriter.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPageSize>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QRandomGenerator>
#include <QtEndian>

#include <cmath>
#include <numbers>

namespace vl {

namespace {

void drawCaption(QPainter& painter, const QRect& bounds, const QString& caption) {
    if (caption.isEmpty()) {
        return;
    }
    QFont font = painter.font();
    font.setPixelSize(std::max(12, bounds.height() / 18));
    font.setBold(true);
    painter.setFont(font);
    const QRect band(bounds.left(), bounds.bottom() - bounds.height() / 8, bounds.width(),
                     bounds.height() / 8);
    painter.fillRect(band, QColor(0, 0, 0, 110));
    painter.setPen(Qt::white);
    painter.drawText(band, Qt::AlignCenter, caption);
}

void drawHills(QPainter& painter, const QRect& r, QColor colour, double height, int seed) {
    QRandomGenerator random{quint32(seed)};
    QPainterPath path;
    path.moveTo(r.left(), r.bottom());
    const int steps = 12;
    for (int i = 0; i <= steps; ++i) {
        const double x = r.left() + r.width() * i / double(steps);
        const double y = r.bottom() - r.height() * height * (0.6 + 0.4 * random.generateDouble());
        path.lineTo(x, y);
    }
    path.lineTo(r.right(), r.bottom());
    path.closeSubpath();
    painter.fillPath(path, colour);
}

}  // namespace

QImage DemoMedia::picture(Scene scene, QSize size, const QString& caption) {
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect r = image.rect();
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    switch (scene) {
        case Scene::Sunset:
            sky.setColorAt(0, QColor(40, 30, 90));
            sky.setColorAt(0.55, QColor(240, 120, 60));
            sky.setColorAt(1, QColor(255, 210, 120));
            painter.fillRect(r, sky);
            painter.setBrush(QColor(255, 230, 150));
            painter.setPen(Qt::NoPen);
            painter.drawEllipse(QPointF(r.width() * 0.6, r.height() * 0.62), r.height() * 0.12,
                                r.height() * 0.12);
            drawHills(painter, r, QColor(60, 30, 50), 0.35, 1);
            break;
        case Scene::Mountains:
            sky.setColorAt(0, QColor(90, 150, 230));
            sky.setColorAt(1, QColor(210, 230, 250));
            painter.fillRect(r, sky);
            drawHills(painter, r, QColor(120, 130, 150), 0.75, 2);
            drawHills(painter, r, QColor(70, 110, 80), 0.45, 3);
            drawHills(painter, r, QColor(40, 80, 50), 0.25, 4);
            break;
        case Scene::Garden: {
            sky.setColorAt(0, QColor(150, 210, 250));
            sky.setColorAt(1, QColor(90, 170, 90));
            painter.fillRect(r, sky);
            QRandomGenerator random(7);
            painter.setPen(Qt::NoPen);
            for (int i = 0; i < 60; ++i) {
                const QPointF centre(random.bounded(r.width()),
                                     r.height() * (0.55 + 0.45 * random.generateDouble()));
                const double radius = r.height() * (0.015 + 0.03 * random.generateDouble());
                painter.setBrush(QColor::fromHsv(random.bounded(360), 180, 240));
                for (int petal = 0; petal < 5; ++petal) {
                    const double angle = petal * 2 * std::numbers::pi / 5;
                    painter.drawEllipse(centre + QPointF(std::cos(angle), std::sin(angle)) * radius,
                                        radius * 0.7, radius * 0.7);
                }
                painter.setBrush(QColor(250, 220, 60));
                painter.drawEllipse(centre, radius * 0.5, radius * 0.5);
            }
            break;
        }
        case Scene::City: {
            sky.setColorAt(0, QColor(10, 10, 40));
            sky.setColorAt(1, QColor(60, 40, 100));
            painter.fillRect(r, sky);
            QRandomGenerator random(11);
            int x = 0;
            while (x < r.width()) {
                const int w = r.width() / 20 + random.bounded(r.width() / 12);
                const int h = int(r.height() * (0.2 + 0.6 * random.generateDouble()));
                const QRect building(x, r.bottom() - h, w, h);
                painter.fillRect(building, QColor(25, 25, 35));
                for (int wy = building.top() + 8; wy < building.bottom() - 8; wy += 14) {
                    for (int wx = building.left() + 6; wx < building.right() - 6; wx += 12) {
                        if (random.bounded(3) == 0) {
                            painter.fillRect(wx, wy, 6, 8, QColor(250, 220, 120));
                        }
                    }
                }
                x += w + 2;
            }
            break;
        }
        case Scene::Beach:
            sky.setColorAt(0, QColor(120, 190, 250));
            sky.setColorAt(0.5, QColor(200, 230, 250));
            painter.fillRect(r, sky);
            painter.fillRect(QRect(0, r.height() / 2, r.width(), r.height() / 4),
                             QColor(30, 120, 180));
            painter.fillRect(QRect(0, r.height() * 3 / 4, r.width(), r.height() / 4),
                             QColor(235, 215, 160));
            painter.setBrush(QColor(255, 250, 200));
            painter.setPen(Qt::NoPen);
            painter.drawEllipse(QPointF(r.width() * 0.2, r.height() * 0.2), r.height() * 0.08,
                                r.height() * 0.08);
            break;
    }
    drawCaption(painter, r, caption);
    return image;
}

std::optional<QString> DemoMedia::writeImage(const QImage& image, const QString& path,
                                             const char* format, int quality) {
    QImageWriter writer(path, format);
    writer.setQuality(quality);
    if (!writer.write(image)) {
        return writer.errorString();
    }
    return std::nullopt;
}

std::optional<QString> DemoMedia::writePdf(const QString& path, const QString& title,
                                           const QStringList& pages) {
    QPdfWriter writer(path);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setResolution(150);
    writer.setTitle(title);
    writer.setCreator(QStringLiteral("velloractl"));
    QPainter painter;
    if (!painter.begin(&writer)) {
        return QStringLiteral("can't draw the PDF");
    }
    const QRect page(0, 0, writer.width(), writer.height());
    const QRect text = page.adjusted(120, 140, -120, -140);

    QFont titleFont = painter.font();
    titleFont.setPointSize(28);
    titleFont.setBold(true);
    QFont bodyFont = painter.font();
    bodyFont.setPointSize(12);

    painter.fillRect(QRect(0, 0, page.width(), page.height() / 3), QColor(40, 90, 160));
    painter.setPen(Qt::white);
    painter.setFont(titleFont);
    painter.drawText(QRect(text.left(), 0, text.width(), page.height() / 3),
                     Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap, title);
    painter.setPen(Qt::black);
    painter.setFont(bodyFont);
    painter.drawText(text.adjusted(0, page.height() / 3, 0, 0), Qt::TextWordWrap,
                     QStringLiteral("Prepared for the Vellora demo drive."));

    int number = 1;
    for (const QString& body : pages) {
        writer.newPage();
        ++number;
        painter.setFont(bodyFont);
        painter.setPen(Qt::black);
        painter.drawText(text, Qt::TextWordWrap, body);
        painter.setPen(Qt::gray);
        painter.drawText(QRect(text.left(), text.bottom() + 40, text.width(), 60), Qt::AlignRight,
                         QStringLiteral("Page %1").arg(number));
    }
    painter.end();
    return std::nullopt;
}

QByteArray DemoMedia::wav(double seconds, const QList<double>& frequencies, int channels,
                          int sampleRate) {
    const quint32 frames = quint32(seconds * sampleRate);
    const quint32 dataSize = frames * quint32(channels) * 2;
    QByteArray out;
    out.reserve(int(44 + dataSize));
    auto put32 = [&](quint32 v) {
        char b[4];
        qToLittleEndian(v, b);
        out.append(b, 4);
    };
    auto put16 = [&](quint16 v) {
        char b[2];
        qToLittleEndian(v, b);
        out.append(b, 2);
    };
    out.append("RIFF", 4);
    put32(36 + dataSize);
    out.append("WAVEfmt ", 8);
    put32(16);
    put16(1);  // PCM
    put16(quint16(channels));
    put32(quint32(sampleRate));
    put32(quint32(sampleRate * channels * 2));
    put16(quint16(channels * 2));
    put16(16);
    out.append("data", 4);
    put32(dataSize);
    const double fade = std::min(0.05 * sampleRate, frames / 4.0);
    for (quint32 i = 0; i < frames; ++i) {
        double value = 0;
        for (double frequency : frequencies) {
            value += std::sin(2 * std::numbers::pi * frequency * i / sampleRate);
        }
        value /= std::max<qsizetype>(1, frequencies.size());
        const double envelope = std::min({1.0, i / fade, (frames - i) / fade});
        const qint16 sample = qint16(value * envelope * 0.6 * 32767);
        for (int c = 0; c < channels; ++c) {
            put16(quint16(sample));
        }
    }
    return out;
}

std::optional<QString> DemoMedia::writeMovie(const QString& path, const QString& caption,
                                             int frames, quint64 sparsePadding) {
    const QSize size(320, 240);
    MjpegAviWriter writer(size.width(), size.height(), 12);
    for (int i = 0; i < frames; ++i) {
        QImage frame(size, QImage::Format_RGB32);
        QPainter painter(&frame);
        painter.setRenderHint(QPainter::Antialiasing);
        QLinearGradient background(0, 0, 0, size.height());
        background.setColorAt(0, QColor::fromHsv((i * 4) % 360, 90, 230));
        background.setColorAt(1, QColor(30, 30, 60));
        painter.fillRect(frame.rect(), background);
        const double t = double(i) / std::max(1, frames - 1);
        const double x = 30 + t * (size.width() - 60);
        const double y = size.height() - 40 - std::abs(std::sin(t * 3 * std::numbers::pi)) * 150;
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 60));
        painter.drawEllipse(QPointF(x, size.height() - 22), 22, 6);
        painter.setBrush(QColor(250, 90, 70));
        painter.drawEllipse(QPointF(x, y), 20, 20);
        painter.setPen(Qt::white);
        painter.drawText(QRect(8, 8, size.width() - 16, 20), Qt::AlignLeft, caption);
        painter.drawText(QRect(8, 8, size.width() - 16, 20), Qt::AlignRight,
                         QStringLiteral("%1/%2").arg(i + 1).arg(frames));
        painter.end();
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        if (!frame.save(&buffer, "JPEG", 80)) {
            return QStringLiteral("can't encode a JPEG frame");
        }
        writer.addFrame(jpeg);
    }
    return writer.write(path, sparsePadding);
}

std::optional<QString> DemoMedia::writeOpenDocumentText(const QString& path, const QString& title,
                                                        const QStringList& paragraphs) {
    auto escaped = [](const QString& text) { return text.toHtmlEscaped().toUtf8(); };
    QByteArray content =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<office:document-content "
        "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
        "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" office:version=\"1.2\">"
        "<office:body><office:text><text:h text:outline-level=\"1\">" +
        escaped(title) + "</text:h>";
    for (const QString& paragraph : paragraphs) {
        content += "<text:p>" + escaped(paragraph) + "</text:p>";
    }
    content += "</office:text></office:body></office:document-content>\n";
    const QByteArray manifest =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\" "
        "manifest:version=\"1.2\">"
        "<manifest:file-entry manifest:full-path=\"/\" "
        "manifest:media-type=\"application/vnd.oasis.opendocument.text\"/>"
        "<manifest:file-entry manifest:full-path=\"content.xml\" manifest:media-type=\"text/xml\"/>"
        "</manifest:manifest>\n";
    StoredZipWriter zip;
    zip.add(QStringLiteral("mimetype"), "application/vnd.oasis.opendocument.text");
    zip.add(QStringLiteral("content.xml"), content);
    zip.add(QStringLiteral("META-INF/manifest.xml"), manifest);
    return zip.write(path);
}

std::optional<QString> DemoMedia::writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(content) != content.size()) {
        return file.errorString();
    }
    return std::nullopt;
}

}  // namespace vl
