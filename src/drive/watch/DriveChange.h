#pragma once

#include "platform/files/Url.h"

namespace vl {

// One change of a drive item as presenters hear of it. URLs are logical: a cloud-only item is
// named by the URL it will have once downloaded, never by its placeholder.
struct DriveChange {
    // Missed: events were lost, so anything at or below url may have changed.
    enum class Kind { Changed, Appeared, Deleted, Moved, Missed };

    Kind kind = Kind::Changed;
    Url url;
    Url newURL;  // Moved only

    static DriveChange changed(const Url& url) { return {Kind::Changed, url, {}}; }
    static DriveChange appeared(const Url& url) { return {Kind::Appeared, url, {}}; }
    static DriveChange deleted(const Url& url) { return {Kind::Deleted, url, {}}; }
    static DriveChange moved(const Url& from, const Url& to) { return {Kind::Moved, from, to}; }
    static DriveChange missed(const Url& url) { return {Kind::Missed, url, {}}; }
};

}  // namespace vl
