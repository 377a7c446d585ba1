#pragma once

#include <QColor>
#include <QString>

namespace vl {

// Compositing of one colour over another, as the tag dots' rims need it: the receiver of each
// operation is the backdrop. Class-level operations only; safe on any thread.
class FileTagColors {
public:
    FileTagColors() = delete;

    // The names of the compositing filters.
    static inline const QString NormalBlendMode = QStringLiteral("normalBlendMode");
    static inline const QString SourceOver = QStringLiteral("sourceOver");
    static inline const QString Multiply = QStringLiteral("multiplyBlendMode");
    static inline const QString Screen = QStringLiteral("screenBlendMode");
    static inline const QString Overlay = QStringLiteral("overlayBlendMode");
    static inline const QString Darken = QStringLiteral("darkenBlendMode");
    static inline const QString Lighten = QStringLiteral("lightenBlendMode");
    static inline const QString ColorDodge = QStringLiteral("colorDodgeBlendMode");
    static inline const QString ColorBurn = QStringLiteral("colorBurnBlendMode");
    static inline const QString PlusLighter = QStringLiteral("plusLighter");
    static inline const QString PlusDarker = QStringLiteral("plusDarker");

    // `color` over `backdrop`, source-over.
    static QColor colorBlendedWithColor(const QColor& backdrop, const QColor& color);
    // `color` over `backdrop` with the named filter; a null filter is source-over, an unknown
    // one gives the backdrop. An invalid or fully transparent `color` gives the backdrop.
    static QColor colorBlendedWithColorCompositingFilter(const QColor& backdrop,
                                                         const QColor& color,
                                                         const QString& filter);
};

}  // namespace vl
