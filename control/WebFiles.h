#pragma once

// What a browser gets from the control port besides the API: the web panel's files (compiled
// into the program's resources under :/web, answered at / and /NAME), and the check that keeps
// other sites' pages away from the API. (The headers that keep the page to itself go on every
// answer: see HttpWire.)
//
// Plain functions, any thread (the resources are read-only).

#include "control/ControlRequests.h"
#include "control/HttpWire.h"

#include <QByteArrayView>
#include <optional>

namespace selvane::control {

// The page's files for GET (and HEAD) of `/`, `/index.html` and `/NAME.EXT` of the panel;
// nothing for any other path (the API's, or a file the panel does not have).
std::optional<Reply> webFile(QByteArrayView method, QByteArrayView path);

// Whether a request may reach the API as far as browsers go: one without an Origin header (a
// script, a button panel) may; one from a page must come from this server's own origin (the
// Origin's host and port are the Host header's), and a browser's cross-site fetch metadata is
// refused. The reason, when not.
Refusal checkOrigin(const RequestHead &head);

} // namespace selvane::control
