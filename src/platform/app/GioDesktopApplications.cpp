#include "platform/app/GioDesktopApplications.h"

#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QByteArray>
#include <QFileInfo>
#include <QStringList>

#include <sys/stat.h>

// GIO's headers name a struct member `signals`, which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#pragma pop_macro("signals")

namespace vl {

namespace {

QString fromUtf8(const char* text) {
    return text ? QString::fromUtf8(text) : QString();
}

// "org.example.Editor" -> "example.org": the domain a reverse-DNS desktop id names.
QString vendorOf(const QString& identifier) {
    QStringList parts = identifier.split(QLatin1Char('.'));
    if (parts.size() < 3) {
        return QString();
    }
    return parts.at(1) + QLatin1Char('.') + parts.at(0);
}

ApplicationRecord recordFor(GAppInfo* info) {
    ApplicationRecord record;
    record.itemName = fromUtf8(g_app_info_get_id(info));
    record.bundleIdentifier = record.itemName;
    if (record.bundleIdentifier.endsWith(QLatin1String(".desktop"))) {
        record.bundleIdentifier.chop(8);
    }
    record.localizedName = fromUtf8(g_app_info_get_display_name(info));
    record.localizedShortName = fromUtf8(g_app_info_get_name(info));
    record.vendorName = vendorOf(record.bundleIdentifier);
    record.bundleExecutable = fromUtf8(g_app_info_get_executable(info));
    record.description = fromUtf8(g_app_info_get_description(info));
    record.supportsOpenInPlace = g_app_info_supports_files(info) || g_app_info_supports_uris(info);
    if (GIcon* icon = g_app_info_get_icon(info)) {
        gchar* text = g_icon_to_string(icon);
        record.iconName = fromUtf8(text);
        g_free(text);
    }
    if (G_IS_DESKTOP_APP_INFO(info)) {
        GDesktopAppInfo* desktop = G_DESKTOP_APP_INFO(info);
        gchar* version = g_desktop_app_info_get_string(desktop, "X-AppVersion");
        record.shortVersionString = fromUtf8(version);
        g_free(version);
        record.requiresTerminal = g_desktop_app_info_get_boolean(desktop, "Terminal");
        const char* file = g_desktop_app_info_get_filename(desktop);
        if (file) {
            record.bundleContainerURL =
                Url::fromPath(QFileInfo(QString::fromUtf8(file)).absolutePath(), true);
            struct stat st {};
            if (::stat(file, &st) == 0) {
                record.itemID = st.st_ino;
            }
        }
    }
    if (!record.bundleExecutable.isEmpty()) {
        gchar* path = g_find_program_in_path(record.bundleExecutable.toLocal8Bit().constData());
        record.installed = path != nullptr;
        g_free(path);
    }
    return record;
}

}  // namespace

std::optional<ApplicationRecord> GioDesktopApplications::defaultApplicationForType(
    const QString& contentType) const {
    GAppInfo* info = g_app_info_get_default_for_type(contentType.toUtf8().constData(), FALSE);
    if (!info) {
        return std::nullopt;
    }
    ApplicationRecord record = recordFor(info);
    g_object_unref(info);
    return record;
}

QList<ApplicationRecord> GioDesktopApplications::applicationsForType(
    const QString& contentType) const {
    QList<ApplicationRecord> records;
    GList* all = g_app_info_get_all_for_type(contentType.toUtf8().constData());
    for (GList* each = all; each; each = each->next) {
        records.append(recordFor(G_APP_INFO(each->data)));
    }
    g_list_free_full(all, g_object_unref);
    return records;
}

void GioDesktopApplications::openURLs(const ApplicationRecord& application, const QList<Url>& urls,
                                      OpenCompletion completion) {
    QList<QByteArray> uris;
    for (const Url& url : urls) {
        uris.append(url.toQUrl().toEncoded());
    }
    const QByteArray id = application.itemName.toUtf8();
    const QString name = application.localizedName;
    Dispatch::globalQueue(QualityOfService::UserInitiated)
        ->async([id, name, uris, completion = std::move(completion)] {
            std::optional<Error> failure;
            GDesktopAppInfo* info = g_desktop_app_info_new(id.constData());
            if (!info) {
                failure =
                    Error(Error::FileErrorDomain, Error::FileNoSuchFile,
                          {{Error::LocalizedDescriptionKey,
                            vl::format(Strings::localized("“%@” is no longer installed."), name)}});
            } else {
                GList* list = nullptr;
                for (const QByteArray& uri : uris) {
                    list = g_list_append(list, const_cast<char*>(uri.constData()));
                }
                GError* error = nullptr;
                if (!g_app_info_launch_uris(G_APP_INFO(info), list, nullptr, &error)) {
                    const QString reason = error ? QString::fromUtf8(error->message) : QString();
                    failure = Error(Error::POSIXErrorDomain, error ? error->code : 0,
                                    {{Error::LocalizedDescriptionKey, reason}});
                }
                if (error) {
                    g_error_free(error);
                }
                g_list_free(list);
                g_object_unref(info);
            }
            if (completion) {
                Dispatch::mainQueue()->async([completion, failure] { completion(failure); });
            }
        });
}

}  // namespace vl
