#include "MjpegAviWriter.h"

#include "LittleEndian.h"

#include <QFile>
#include <QtEndian>

namespace vl {

namespace {

using LittleEndian::put16;
using LittleEndian::put32;

void fourcc(QByteArray& out, const char* code) {
    out.append(code, 4);
}

QByteArray chunk(const char* id, const QByteArray& data) {
    QByteArray out;
    fourcc(out, id);
    put32(out, quint32(data.size()));
    out += data;
    if (data.size() % 2) {
        out.append('\0');
    }
    return out;
}

QByteArray list(const char* type, const QByteArray& data) {
    QByteArray body;
    fourcc(body, type);
    body += data;
    return chunk("LIST", body);
}

constexpr quint32 AviHasIndex = 0x10;
constexpr quint32 IndexKeyFrame = 0x10;

}  // namespace

MjpegAviWriter::MjpegAviWriter(int width, int height, int framesPerSecond)
    : width_(width), height_(height), framesPerSecond_(framesPerSecond) {}

void MjpegAviWriter::addFrame(QByteArray jpeg) {
    frames_.append(std::move(jpeg));
}

QByteArray MjpegAviWriter::bytes() const {
    quint32 largest = 0;
    for (const QByteArray& frame : frames_) {
        largest = std::max(largest, quint32(frame.size()));
    }
    const quint32 frameCount = quint32(frames_.size());

    QByteArray avih;
    put32(avih, quint32(1000000 / framesPerSecond_));  // microseconds per frame
    put32(avih, largest * quint32(framesPerSecond_));  // max bytes per second
    put32(avih, 0);                                    // padding granularity
    put32(avih, AviHasIndex);
    put32(avih, frameCount);
    put32(avih, 0);  // initial frames
    put32(avih, 1);  // streams
    put32(avih, largest);
    put32(avih, quint32(width_));
    put32(avih, quint32(height_));
    for (int i = 0; i < 4; ++i) {
        put32(avih, 0);
    }

    QByteArray strh;
    fourcc(strh, "vids");
    fourcc(strh, "MJPG");
    put32(strh, 0);                          // flags
    put16(strh, 0);                          // priority
    put16(strh, 0);                          // language
    put32(strh, 0);                          // initial frames
    put32(strh, 1);                          // scale
    put32(strh, quint32(framesPerSecond_));  // rate: frames per second = rate / scale
    put32(strh, 0);                          // start
    put32(strh, frameCount);                 // length
    put32(strh, largest);
    put32(strh, 0xFFFFFFFF);  // quality: default
    put32(strh, 0);           // sample size: varies
    put16(strh, 0);
    put16(strh, 0);
    put16(strh, quint16(width_));
    put16(strh, quint16(height_));

    QByteArray strf;  // BITMAPINFOHEADER
    put32(strf, 40);
    put32(strf, quint32(width_));
    put32(strf, quint32(height_));
    put16(strf, 1);   // planes
    put16(strf, 24);  // bits per pixel
    fourcc(strf, "MJPG");
    put32(strf, quint32(width_ * height_ * 3));
    for (int i = 0; i < 4; ++i) {
        put32(strf, 0);
    }

    const QByteArray hdrl =
        list("hdrl", chunk("avih", avih) + list("strl", chunk("strh", strh) + chunk("strf", strf)));

    QByteArray movi;
    QByteArray index;
    for (const QByteArray& frame : frames_) {
        // Offsets count from the 'movi' type code.
        const quint32 offset = quint32(movi.size()) + 4;
        movi += chunk("00dc", frame);
        fourcc(index, "00dc");
        put32(index, IndexKeyFrame);
        put32(index, offset);
        put32(index, quint32(frame.size()));
    }

    QByteArray body;
    fourcc(body, "AVI ");
    body += hdrl + list("movi", movi) + chunk("idx1", index);
    return chunk("RIFF", body);
}

std::optional<QString> MjpegAviWriter::write(const QString& path, quint64 sparsePadding) const {
    QByteArray data = bytes();
    quint64 junkSize = 0;
    if (sparsePadding > 0) {
        junkSize = sparsePadding + (sparsePadding % 2);
        const quint64 riffSize = quint64(data.size()) - 8 + 8 + junkSize;
        if (riffSize > 0xFFFFFFFFull) {
            return QStringLiteral("padding too large for one RIFF");
        }
        qToLittleEndian(quint32(riffSize), data.data() + 4);
        QByteArray header;
        fourcc(header, "JUNK");
        put32(header, quint32(junkSize));
        data += header;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(data) != data.size()) {
        return file.errorString();
    }
    if (junkSize > 0 && !file.resize(qint64(data.size()) + qint64(junkSize))) {
        // resize() extends with a hole: the padding takes no blocks.
        return file.errorString();
    }
    return std::nullopt;
}

}  // namespace vl
