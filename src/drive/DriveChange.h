#pragma once

#include "platform/Url.h"

namespace vl {

// One change of a drive item as presenters hear of it. URLs are logical: a cloud-only item is
// named by the URL it will have once downloaded, never by its placeholder.
struct DriveChange {
    enum class Kind { Changed, Appeared, Deleted, Moved };

    Kind kind = Kind::Changed;
    Url url;
    Url newURL;  // Moved only

    static DriveChange changed(const Url& url) { return {Kind::Changed, url, {}}; }
    static DriveChange appeared(const Url& url) { return {Kind::Appeared, url, {}}; }
    static DriveChange deleted(const Url& url) { return {Kind::Deleted, url, {}}; }
    static DriveChange moved(const Url& from, const Url& to) { return {Kind::Moved, from, to}; }
};

}  // namespace vl
