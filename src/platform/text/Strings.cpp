#include "platform/text/Strings.h"

#include <QCoreApplication>
#include <QLocale>
#include <QThread>
#include <QTranslator>

#include <atomic>
#include <cmath>
#include <limits>
#include <mutex>

namespace vl::Strings {

namespace {

// Both translators are created once and live for the whole process: the application keeps raw
// pointers to installed translators, and lookups may run on any thread until exit.
struct Tables {
    QTranslator* english = nullptr;
    // Absent when the system locale has no table of its own, or when it resolves to English.
    QTranslator* locale = nullptr;
};

std::once_flag installOnce;
Tables tables;  // written once inside installOnce, read-only afterwards

std::mutex registrationMutex;
std::atomic<bool> registered{false};  // written under registrationMutex

void registerWithApplication(QCoreApplication* app, const Tables& loaded) {
    // Installing sends a LanguageChange event through the application, so it belongs on the
    // application's thread. Later-installed translators are searched first: English goes first
    // so that the locale's table wins.
    const auto registerBoth = [loaded] {
        QCoreApplication::installTranslator(loaded.english);
        if (loaded.locale != nullptr) {
            QCoreApplication::installTranslator(loaded.locale);
        }
    };
    if (QThread::currentThread() == app->thread()) {
        registerBoth();
    } else {
        QMetaObject::invokeMethod(app, registerBoth, Qt::QueuedConnection);
    }
}

void loadTables() {
    auto* english = new QTranslator;
    if (!english->load(QStringLiteral(":/i18n/vellora_en.qm"))) {
        qWarning("The English string table :/i18n/vellora_en.qm is missing; keys show as text");
    }
    tables.english = english;

    auto* locale = new QTranslator;
    if (locale->load(QLocale::system(), QStringLiteral("vellora"), QStringLiteral("_"),
                     QStringLiteral(":/i18n")) &&
        locale->filePath() != english->filePath()) {
        tables.locale = locale;
    } else {
        delete locale;
    }
}

// The text of `id` in the locale's table, else in the English table; null when neither has it.
// `n` is the numerus count, or -1 for a plain key. Each table picks the form by its own
// language's plural rules.
QString lookup(const QByteArray& id, int n) {
    install();
    for (const QTranslator* table : {tables.locale, tables.english}) {
        if (table == nullptr) {
            continue;
        }
        QString text = table->translate(nullptr, id.constData(), nullptr, n);
        if (!text.isNull()) {
            return text;
        }
    }
    return {};
}

// The integer that selects a numerus form for `count`. Plural rules are defined on whole
// numbers; a count with a fraction (1.5 GB) takes the form of 2, which is the plural ("other")
// form in English and in the languages whose tables have one form for all counts above one;
// in the Slavic tables 2 selects the "few" form, the one their grammar also uses with fractions.
int numerusCount(double count) {
    const double magnitude = std::fabs(count);
    if (!std::isfinite(magnitude) || magnitude != std::trunc(magnitude)) {
        return 2;
    }
    if (magnitude >= double(std::numeric_limits<int>::max())) {
        return std::numeric_limits<int>::max();
    }
    return int(magnitude);
}

}  // namespace

void install() {
    std::call_once(installOnce, loadTables);
    // Lookups go to the two tables directly, so they work without an application and on any
    // thread; the application gets them as well (once one exists), for qtTrId and for widgets
    // that retranslate.
    if (registered.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(registrationMutex);
    auto* app = QCoreApplication::instance();
    if (!registered.load(std::memory_order_relaxed) && app != nullptr) {
        registerWithApplication(app, tables);
        registered.store(true, std::memory_order_release);
    }
}

QString localized(const char* key) {
    QString text = lookup(QByteArray(key), -1);
    return text.isNull() ? QString::fromUtf8(key) : text;
}

QString localized(const QString& key) {
    QString text = lookup(key.toUtf8(), -1);
    return text.isNull() ? key : text;
}

QString localizedPlural(const QString& key, double count) {
    QString text = lookup(key.toUtf8(), numerusCount(count));
    return text.isNull() ? key : text;
}

}  // namespace vl::Strings
