#pragma once

#include <QHash>
#include <QString>
#include <QUrl>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace vl {

// A file URL. Two URLs are equal when their paths are, ignoring a trailing slash, so a directory
// URL with or without "/" compares equal; whether the URL is known to name a directory only shows
// in description() and toQUrl(). A URL made from a promise carries the placeholder it was resolved
// from (its physical URL); the attachment does not take part in equality. Cheap to copy.
class Url {
public:
    Url() = default;

    // An absolute local path; a relative path is made absolute against the working directory.
    // A trailing "/" marks a directory.
    static Url fromPath(const QString& path);
    static Url fromPath(const QString& path, bool isDirectory);
    // A "file:" QUrl; anything else gives the empty URL.
    static Url fromQUrl(const QUrl& url);

    // The path without a trailing slash ("/" for the root); empty for the empty URL.
    const QString& path() const { return path_; }
    QUrl toQUrl() const;
    // "file:///..." with a trailing slash when the URL is known to be a directory.
    QString description() const;

    bool isEmpty() const { return path_.isEmpty(); }
    bool isFileURL() const { return !path_.isEmpty(); }
    bool hasDirectoryPath() const { return isDirectory_; }

    QString lastPathComponent() const;
    // The same without a copy, valid while this URL lives.
    QStringView lastPathComponentView() const;
    // The extension without its dot; empty when the last component has none (".profile" and
    // "name." have none either).
    QString pathExtension() const;
    Url deletingPathExtension() const;
    Url appendingPathComponent(const QString& name, bool isDirectory = false) const;
    Url deletingLastPathComponent() const;
    // True when `other` is this URL or lies below it.
    bool isAncestorOf(const Url& other) const;

    std::optional<Url> promisedPhysicalURL() const;
    void setPromisedPhysicalURL(const Url& physicalURL);

    bool operator==(const Url& other) const { return path_ == other.path_; }
    bool operator!=(const Url& other) const { return path_ != other.path_; }
    bool operator<(const Url& other) const { return path_ < other.path_; }

private:
    QString path_;
    bool isDirectory_ = false;
    std::shared_ptr<const Url> physical_;
};

inline size_t qHash(const Url& url, size_t seed = 0) {
    return qHash(url.path(), seed);
}

}  // namespace vl

template <>
struct std::hash<vl::Url> {
    size_t operator()(const vl::Url& url) const noexcept { return qHash(url.path()); }
};
