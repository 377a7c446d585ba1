#pragma once

#include "drive/coordination/DriveCoordinationBackend.h"
#include "drive/service/DriveService.h"
#include "platform/cloud/FileCoordinator.h"

#include <memory>

namespace vl::test {

// A coordination service that grants nothing: every access answers `error` and never runs its
// accessor. Installed for the life of the object; the drive's coordinator comes back after it.
class RefusingCoordinatorBackend : public FileCoordinator::Backend {
public:
    explicit RefusingCoordinatorBackend(Error error) : error_(std::move(error)) {}

    class Scope {
    public:
        explicit Scope(Error error) {
            FileCoordinator::Backend::setShared(
                std::make_shared<RefusingCoordinatorBackend>(std::move(error)));
        }
        ~Scope() { DriveCoordinationBackend::install(DriveService::current()->store()); }
    };

    std::unique_ptr<FileCoordinator::Session> makeSession(const FilePresenter*) override {
        return std::make_unique<RefusingSession>(error_);
    }
    void addFilePresenter(const std::shared_ptr<FilePresenter>&) override {}
    void removeFilePresenter(const FilePresenter*) override {}
    std::vector<std::shared_ptr<FilePresenter>> filePresenters() const override { return {}; }

private:
    class RefusingSession : public FileCoordinator::Session {
    public:
        explicit RefusingSession(Error error) : error_(std::move(error)) {}
        std::optional<Error> coordinateReading(const Url&, FileCoordinator::ReadingOptions,
                                               const FileCoordinator::Accessor&) override {
            return error_;
        }
        std::optional<Error> coordinateWriting(const Url&, FileCoordinator::WritingOptions,
                                               const FileCoordinator::Accessor&) override {
            return error_;
        }
        std::optional<Error> coordinateWriting(const Url&, FileCoordinator::WritingOptions,
                                               const Url&, FileCoordinator::WritingOptions,
                                               const FileCoordinator::TwoURLAccessor&) override {
            return error_;
        }
        void itemAtURLWillMoveToURL(const Url&, const Url&) override {}
        void itemAtURLDidMoveToURL(const Url&, const Url&) override {}
        void cancel() override {}

    private:
        Error error_;
    };

    Error error_;
};

}  // namespace vl::test
