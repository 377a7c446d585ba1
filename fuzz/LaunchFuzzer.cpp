// Feeds arbitrary bytes to the two readers of what other programs send the app: a launch URL's
// text (the path and the `mode` verbs) and the hand-off message a later start writes on the
// instance socket. Besides the sanitizers' checks it holds them to what the delegate and the
// channel rely on: the mode is preview or details, a file URL is absolute, text without "%" is
// unchanged by unescaping, and a message read back from its own writing is the same request.

#include "app/LaunchRequest.h"
#include "app/LaunchURL.h"

#include <QUrl>

#include <cstdint>
#include <cstdlib>

namespace {

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString text = QString::fromUtf8(bytes);

    const QUrl url(text, QUrl::StrictMode);
    if (url.isValid()) {
        const int mode = vl::LaunchURL::previewModeOf(url);
        check(mode == 0 || mode == 1);
        const vl::Url file = vl::LaunchURL::fileURLOf(url);
        check(file.isEmpty() || file.path().startsWith(QLatin1Char('/')));
    }
    if (!text.contains(QLatin1Char('%'))) {
        check(vl::LaunchURL::unescaped(text) == text);
    }

    if (const std::optional<vl::LaunchRequest> request = vl::LaunchRequest::fromMessage(bytes)) {
        check(vl::LaunchRequest::fromMessage(request->message()) == request);
    }
    return 0;
}
