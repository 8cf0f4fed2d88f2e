#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace vistrane {

/// The receiver frees replies of the X server.
template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

/// The toolkit's connection to the X server; null on another window system.
xcb_connection_t* x11Connection();

xcb_atom_t x11Atom(xcb_connection_t* server, std::string_view name);

} // namespace vistrane
