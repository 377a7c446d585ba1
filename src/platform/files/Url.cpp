#include "platform/files/Url.h"

#include <QDir>
#include <QFileInfo>

namespace vl {

namespace {

QString normalisedPath(const QString& path) {
    if (path.isEmpty()) {
        return {};
    }
    QString absolute = QDir::isAbsolutePath(path) ? path : QDir::current().absoluteFilePath(path);
    QString clean = QDir::cleanPath(absolute);
    return clean.isEmpty() ? QStringLiteral("/") : clean;
}

}  // namespace

Url Url::fromPath(const QString& path) {
    return fromPath(path, path.endsWith(QLatin1Char('/')));
}

Url Url::fromPath(const QString& path, bool isDirectory) {
    Url url;
    url.path_ = normalisedPath(path);
    url.isDirectory_ = isDirectory && !url.path_.isEmpty();
    return url;
}

Url Url::fromQUrl(const QUrl& url) {
    if (!url.isLocalFile()) {
        return {};
    }
    return fromPath(url.toLocalFile(), url.path().endsWith(QLatin1Char('/')));
}

QUrl Url::toQUrl() const {
    if (path_.isEmpty()) {
        return {};
    }
    if (isDirectory_ && path_ != QLatin1String("/")) {
        return QUrl::fromLocalFile(path_ + QLatin1Char('/'));
    }
    return QUrl::fromLocalFile(path_);
}

QString Url::description() const {
    return toQUrl().toString(QUrl::FullyEncoded);
}

QString Url::lastPathComponent() const {
    return lastPathComponentView().toString();
}

QStringView Url::lastPathComponentView() const {
    if (path_ == QLatin1String("/")) {
        return path_;
    }
    return QStringView(path_).mid(path_.lastIndexOf(QLatin1Char('/')) + 1);
}

QString Url::pathExtension() const {
    const QString name = lastPathComponent();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0 || dot == name.size() - 1) {
        return {};
    }
    return name.mid(dot + 1);
}

Url Url::deletingPathExtension() const {
    const QString extension = pathExtension();
    if (extension.isEmpty()) {
        return *this;
    }
    Url url;
    url.path_ = path_.left(path_.size() - extension.size() - 1);
    url.isDirectory_ = isDirectory_;
    return url;
}

Url Url::appendingPathComponent(const QString& name, bool isDirectory) const {
    if (path_.isEmpty()) {
        return {};
    }
    const QString base = path_ == QLatin1String("/") ? QString() : path_;
    if (!name.isEmpty() && !name.contains(QLatin1Char('/')) && name != QLatin1String(".") &&
        name != QLatin1String("..")) {
        // A plain name keeps the path clean: no need to normalise it again.
        Url url;
        url.path_ = base + QLatin1Char('/') + name;
        url.isDirectory_ = isDirectory;
        return url;
    }
    return fromPath(base + QLatin1Char('/') + name, isDirectory);
}

Url Url::deletingLastPathComponent() const {
    if (path_.isEmpty() || path_ == QLatin1String("/")) {
        return *this;
    }
    const qsizetype slash = path_.lastIndexOf(QLatin1Char('/'));
    Url url;
    url.path_ = slash <= 0 ? QStringLiteral("/") : path_.left(slash);
    url.isDirectory_ = true;
    return url;
}

bool Url::isAncestorOf(const Url& other) const {
    if (path_.isEmpty() || other.path_.isEmpty()) {
        return false;
    }
    if (other.path_ == path_) {
        return true;
    }
    if (path_ == QLatin1String("/")) {
        return true;
    }
    return other.path_.startsWith(path_) && other.path_.at(path_.size()) == QLatin1Char('/');
}

std::optional<Url> Url::promisedPhysicalURL() const {
    if (!physical_) {
        return std::nullopt;
    }
    return *physical_;
}

void Url::setPromisedPhysicalURL(const Url& physicalURL) {
    physical_ = physicalURL.isEmpty() ? nullptr : std::make_shared<const Url>(physicalURL);
}

}  // namespace vl
