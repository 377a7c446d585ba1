#pragma once

#include "platform/cloud/FilePresenter.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QFlags>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vl {

// Coordinated access to items of the drive. A coordinated read or write waits until no
// conflicting access by another coordinator is in progress (reads of one item share, a write
// excludes everything else on the item, its folders and what lies inside it), then runs the
// accessor synchronously on the calling thread with the URL(s) to use, which may differ from the
// ones asked for. When the coordinator cannot grant the access it returns its own error and the
// accessor does not run.
//
// A coordinated read of a cloud-only item without ImmediatelyAvailableMetadataOnly downloads the
// item first, publishing ItemProgress for its URL; the accessor then finds the content local.
// Changes made by a coordinated write are told to the registered presenters of the items
// concerned, except the presenter this coordinator was created with.
//
// One coordinator serves one thread at a time; cancel() may be called from any thread.
class FileCoordinator {
public:
    enum class ReadingOption : unsigned {
        WithoutChanges = 1u << 0,
        ResolvesSymbolicLink = 1u << 1,
        // Neither downloads nor waits for a download: attributes and promises only.
        ImmediatelyAvailableMetadataOnly = 1u << 2,
    };
    Q_DECLARE_FLAGS(ReadingOptions, ReadingOption)

    enum class WritingOption : unsigned {
        ForDeleting = 1u << 0,
        ForMoving = 1u << 1,
        ForMerging = 1u << 2,
        ForReplacing = 1u << 3,
    };
    Q_DECLARE_FLAGS(WritingOptions, WritingOption)

    using Accessor = std::function<void(const Url& newURL)>;
    using TwoURLAccessor = std::function<void(const Url& newURL1, const Url& newURL2)>;

    // The work of one coordinator, made by the installed backend.
    class Session {
    public:
        virtual ~Session() = default;
        virtual std::optional<Error> coordinateReading(const Url& url, ReadingOptions options,
                                                       const Accessor& accessor) = 0;
        virtual std::optional<Error> coordinateWriting(const Url& url, WritingOptions options,
                                                       const Accessor& accessor) = 0;
        virtual std::optional<Error> coordinateWriting(const Url& url1, WritingOptions options1,
                                                       const Url& url2, WritingOptions options2,
                                                       const TwoURLAccessor& accessor) = 0;
        virtual void itemAtURLWillMoveToURL(const Url& oldURL, const Url& newURL) = 0;
        virtual void itemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) = 0;
        // Thread-safe; makes a waiting or later access of this session fail with
        // Error::UserCancelled.
        virtual void cancel() = 0;
    };

    // The coordination service behind every FileCoordinator: the drive service installs one,
    // tests may install a fake.
    class Backend {
    public:
        virtual ~Backend() = default;
        static Backend& shared();
        static void setShared(std::shared_ptr<Backend> backend);
        static bool isInstalled();

        // `filePresenter` only identifies the presenter not to tell; it is not retained.
        virtual std::unique_ptr<Session> makeSession(const FilePresenter* filePresenter) = 0;
        virtual void addFilePresenter(const std::shared_ptr<FilePresenter>& filePresenter) = 0;
        virtual void removeFilePresenter(const FilePresenter* filePresenter) = 0;
        virtual std::vector<std::shared_ptr<FilePresenter>> filePresenters() const = 0;
    };

    // The presenter, if any, is the one this coordinator acts for: it is not told of the
    // coordinator's own changes. It is not retained.
    explicit FileCoordinator(const FilePresenter* filePresenter = nullptr);
    explicit FileCoordinator(const std::shared_ptr<FilePresenter>& filePresenter);
    ~FileCoordinator();
    FileCoordinator(const FileCoordinator&) = delete;
    FileCoordinator& operator=(const FileCoordinator&) = delete;

    // `outError` (may be null) receives the coordinator's own error, or nothing when the accessor
    // ran. An error of the accessor's own work is the accessor's to report.
    void coordinateReadingItemAtURL(const Url& url, ReadingOptions options,
                                    std::optional<Error>* outError, const Accessor& byAccessor);
    void coordinateWritingItemAtURL(const Url& url, WritingOptions options,
                                    std::optional<Error>* outError, const Accessor& byAccessor);
    void coordinateWritingItemAtURL(const Url& url1, WritingOptions options1, const Url& url2,
                                    WritingOptions options2, std::optional<Error>* outError,
                                    const TwoURLAccessor& byAccessor);

    // Announcements from inside a write accessor: the item is about to move / has moved. The
    // presenters of the old URL are told of the new one once the move is done.
    void itemAtURLWillMoveToURL(const Url& oldURL, const Url& newURL);
    void itemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL);

    void cancel();

    // Presenters are held weakly: one that is destroyed without being removed simply stops
    // hearing. Removing one that is not registered does nothing.
    static void addFilePresenter(const std::shared_ptr<FilePresenter>& filePresenter);
    static void removeFilePresenter(const FilePresenter* filePresenter);
    static std::vector<std::shared_ptr<FilePresenter>> filePresenters();

private:
    std::unique_ptr<Session> session_;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(FileCoordinator::ReadingOptions)
Q_DECLARE_OPERATORS_FOR_FLAGS(FileCoordinator::WritingOptions)

}  // namespace vl
