#pragma once

#include "Command.h"

#include "platform/cloud/CloudContainer.h"

#include <QString>

#include <optional>

namespace vl {

class ToolContext;

// seed-demo [--force]: makes the demo drive: the user's folders with pictures, PDF, text, audio
// and movies; three app libraries (folder levels none, one, any), the Writer
// library with a package document type of its own and one such package; cloud-only items of several
// sizes (one over 100 MiB, sparse in the cloud copy); a shared document; a document reference;
// the tag dictionary and tagged items. Refuses a home that already has a drive unless --force.
class SeedDemoCommand : public Command {
public:
    // The cloud-only demo movie: over 100 MiB, almost all of it a hole.
    static constexpr quint64 LargeMovieBytes = 120ull * 1024 * 1024;

    // The Writer library's own document type: a manuscript, stored as a folder.
    static CloudContainer::DocumentType manuscriptType() {
        return {QStringLiteral("Writer Manuscript"),
                {QStringLiteral("application/x-tessaly-manuscript")},
                true,
                {QStringLiteral("manuscript")}};
    }

    QString name() const override { return QStringLiteral("seed-demo"); }
    QString synopsis() const override { return QStringLiteral("seed-demo [--force]"); }
    QString summary() const override {
        return QStringLiteral(
            "Make the demo drive (no downloads). --force replaces an existing drive.");
    }
    int run(ToolContext& context, Arguments& arguments) override;

private:
    static bool hasDrive(const ToolContext& context);
    static std::optional<QString> removeDrive(ToolContext& context);
    std::optional<QString> seed(ToolContext& context, const QString& staging);
};

}  // namespace vl
