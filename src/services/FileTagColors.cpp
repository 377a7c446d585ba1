#include "services/FileTagColors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vl {

namespace {

constexpr double kEpsilon = std::numeric_limits<float>::epsilon();

struct Rgba {
    double c[3];
    double a;
};

Rgba components(const QColor& color) {
    float r = 0, g = 0, b = 0, a = 0;
    color.toRgb().getRgbF(&r, &g, &b, &a);
    return {{r, g, b}, a};
}

QColor colorOf(const double c[3], double alpha) {
    return QColor::fromRgbF(float(c[0]), float(c[1]), float(c[2]), float(alpha));
}

double blend(const QString& filter, double cb, double cf, bool* known) {
    *known = true;
    if (filter == FileTagColors::Multiply) {
        return cf * cb;
    }
    if (filter == FileTagColors::Screen) {
        return 1 - (1 - cf) * (1 - cb);
    }
    if (filter == FileTagColors::Overlay) {
        return cb < 0.5 ? 2 * cf * cb : 1 - 2 * (1 - cf) * (1 - cb);
    }
    if (filter == FileTagColors::Darken) {
        return std::min(cf, cb);
    }
    if (filter == FileTagColors::Lighten) {
        return std::max(cf, cb);
    }
    if (filter == FileTagColors::ColorDodge) {
        return std::fabs(1 - cf) < kEpsilon ? 1.0 : cb / (1 - cf);
    }
    if (filter == FileTagColors::PlusLighter) {
        return std::min(1.0, cf + cb);
    }
    *known = false;
    return 0;
}

}  // namespace

QColor FileTagColors::colorBlendedWithColor(const QColor& backdrop, const QColor& color) {
    return colorBlendedWithColorCompositingFilter(backdrop, color, SourceOver);
}

QColor FileTagColors::colorBlendedWithColorCompositingFilter(const QColor& backdrop,
                                                             const QColor& color,
                                                             const QString& filter) {
    if (!color.isValid()) {
        return backdrop;
    }
    const Rgba f = components(color);
    if (f.a < kEpsilon) {
        return backdrop;
    }
    const Rgba b = components(backdrop);
    double out[3];
    if (filter.isNull() || filter == NormalBlendMode || filter == SourceOver) {
        const double alpha = f.a + b.a * (1 - f.a);
        if (std::fabs(alpha) < kEpsilon) {
            const double white[3] = {1, 1, 1};
            return colorOf(white, alpha);
        }
        for (int i = 0; i < 3; ++i) {
            out[i] = (f.a * f.c[i] + (1 - f.a) * b.a * b.c[i]) / alpha;
        }
        return colorOf(out, alpha);
    }
    if (filter == ColorBurn) {
        for (int i = 0; i < 3; ++i) {
            const double premultiplied = b.c[i] * b.a;
            const double burnt =
                std::fabs(f.c[i]) >= kEpsilon ? 1 - (1 - premultiplied) / f.c[i] : 0.0;
            out[i] = f.a * burnt + (1 - f.a) * premultiplied;
        }
        return colorOf(out, b.a);
    }
    if (filter == PlusDarker) {
        const double alpha = std::clamp(f.a + b.a, 0.0, 1.0);
        if (std::fabs(b.a) < kEpsilon || std::fabs(alpha) < kEpsilon) {
            const double black[3] = {0, 0, 0};
            return colorOf(black, b.a);
        }
        for (int i = 0; i < 3; ++i) {
            const double t = std::clamp((f.a - f.c[i] * f.a) + (b.a - b.c[i]), 0.0, 1.0);
            out[i] = std::clamp(alpha - t / b.a, 0.0, 1.0);
        }
        return colorOf(out, b.a);
    }
    for (int i = 0; i < 3; ++i) {
        bool known = false;
        const double mixed = blend(filter, b.c[i], f.c[i], &known);
        if (!known) {
            return backdrop;
        }
        out[i] = (1 - f.a) * b.c[i] + f.a * mixed;
    }
    return colorOf(out, b.a);
}

}  // namespace vl
