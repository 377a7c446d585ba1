#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace vl {

// Writes a Motion-JPEG AVI: RIFF 'AVI ' with the header list (avih, one video stream's strh and
// strf), the 'movi' list of '00dc' JPEG frames, and the 'idx1' index. Optional trailing padding
// goes into a JUNK chunk that is left as a hole in the file, so a large file costs no disk.
class MjpegAviWriter {
public:
    MjpegAviWriter(int width, int height, int framesPerSecond);

    void addFrame(QByteArray jpeg);
    // Writes the file; the error text on failure.
    std::optional<QString> write(const QString& path, quint64 sparsePadding = 0) const;
    QByteArray bytes() const;

private:
    int width_;
    int height_;
    int framesPerSecond_;
    QList<QByteArray> frames_;
};

}  // namespace vl
