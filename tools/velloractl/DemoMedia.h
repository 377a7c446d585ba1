#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// Content for the demo drive, all made on the spot: drawn pictures, a PDF of text pages, a WAV
// tone and a small Motion-JPEG movie. Each writer answers an error text on failure.
class DemoMedia {
public:
    enum class Scene { Sunset, Mountains, Garden, City, Beach };

    static QImage picture(Scene scene, QSize size, const QString& caption);
    static std::optional<QString> writeImage(const QImage& image, const QString& path,
                                             const char* format, int quality = 90);
    // An A4 PDF: a title page and one page per entry of `pages`.
    static std::optional<QString> writePdf(const QString& path, const QString& title,
                                           const QStringList& pages);
    // 16-bit PCM: a chord of the given frequencies, faded in and out.
    static QByteArray wav(double seconds, const QList<double>& frequencies, int channels = 1,
                          int sampleRate = 44100);
    // A ball bouncing across a gradient, `frames` frames at 12 per second; `sparsePadding` bytes
    // of hole at the end make a large file that costs no disk.
    static std::optional<QString> writeMovie(const QString& path, const QString& caption,
                                             int frames, quint64 sparsePadding = 0);
    // An OpenDocument text: a heading and paragraphs.
    static std::optional<QString> writeOpenDocumentText(const QString& path, const QString& title,
                                                        const QStringList& paragraphs);
    static std::optional<QString> writeFile(const QString& path, const QByteArray& content);
};

}  // namespace vl
