#include "platform/cloud/FileCoordinator.h"

#include <QtGlobal>

#include <mutex>

namespace vl {

namespace {

std::mutex backendMutex;
std::shared_ptr<FileCoordinator::Backend> installedBackend;  // guarded by backendMutex

std::shared_ptr<FileCoordinator::Backend> currentBackend() {
    std::lock_guard lock(backendMutex);
    Q_ASSERT_X(installedBackend, "FileCoordinator", "no file coordination backend installed");
    return installedBackend;
}

}  // namespace

FileCoordinator::Backend& FileCoordinator::Backend::shared() {
    return *currentBackend();
}

void FileCoordinator::Backend::setShared(std::shared_ptr<Backend> backend) {
    std::lock_guard lock(backendMutex);
    installedBackend = std::move(backend);
}

bool FileCoordinator::Backend::isInstalled() {
    std::lock_guard lock(backendMutex);
    return installedBackend != nullptr;
}

FileCoordinator::FileCoordinator(const FilePresenter* filePresenter)
    : session_(Backend::shared().makeSession(filePresenter)) {}

FileCoordinator::FileCoordinator(const std::shared_ptr<FilePresenter>& filePresenter)
    : FileCoordinator(filePresenter.get()) {}

FileCoordinator::~FileCoordinator() = default;

void FileCoordinator::coordinateReadingItemAtURL(const Url& url, ReadingOptions options,
                                                 std::optional<Error>* outError,
                                                 const Accessor& byAccessor) {
    std::optional<Error> error = session_->coordinateReading(url, options, byAccessor);
    if (outError) {
        *outError = std::move(error);
    }
}

void FileCoordinator::coordinateWritingItemAtURL(const Url& url, WritingOptions options,
                                                 std::optional<Error>* outError,
                                                 const Accessor& byAccessor) {
    std::optional<Error> error = session_->coordinateWriting(url, options, byAccessor);
    if (outError) {
        *outError = std::move(error);
    }
}

void FileCoordinator::coordinateWritingItemAtURL(const Url& url1, WritingOptions options1,
                                                 const Url& url2, WritingOptions options2,
                                                 std::optional<Error>* outError,
                                                 const TwoURLAccessor& byAccessor) {
    std::optional<Error> error =
        session_->coordinateWriting(url1, options1, url2, options2, byAccessor);
    if (outError) {
        *outError = std::move(error);
    }
}

void FileCoordinator::itemAtURLWillMoveToURL(const Url& oldURL, const Url& newURL) {
    session_->itemAtURLWillMoveToURL(oldURL, newURL);
}

void FileCoordinator::itemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) {
    session_->itemAtURLDidMoveToURL(oldURL, newURL);
}

void FileCoordinator::cancel() {
    session_->cancel();
}

void FileCoordinator::addFilePresenter(const std::shared_ptr<FilePresenter>& filePresenter) {
    currentBackend()->addFilePresenter(filePresenter);
}

void FileCoordinator::removeFilePresenter(const FilePresenter* filePresenter) {
    // Presenters remove themselves when destroyed, possibly after a test took the backend away.
    std::shared_ptr<Backend> backend;
    {
        std::lock_guard lock(backendMutex);
        backend = installedBackend;
    }
    if (backend) {
        backend->removeFilePresenter(filePresenter);
    }
}

std::vector<std::shared_ptr<FilePresenter>> FileCoordinator::filePresenters() {
    return currentBackend()->filePresenters();
}

}  // namespace vl
