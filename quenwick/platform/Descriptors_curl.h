#pragma once

#include <curl/curl.h>

namespace quenwick::platform {

/// Makes a multi handle whose own descriptors are closed in a child's program, as curl does not
/// see to that itself.
CURLM* makeCloseOnExecMulti();

/// Opens the sockets of transfers, closed in a child's program; a callback for curl.
curl_socket_t openCloseOnExecSocket(void* context, curlsocktype purpose, curl_sockaddr* address);

}  // namespace quenwick::platform
