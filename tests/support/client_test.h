#pragma once

// The only include that a test of the client needs.
#include "support/call.h"
#include "support/client_run.h"
#include "support/client_window.h"
#include "support/creation_form.h"
#include "support/enabled_watch.h"
#include "support/json.h"
#include "support/message_catcher.h"
#include "support/opened_urls.h"
#include "support/picture.h"
#include "support/scripted_server.h"
#include "support/stored_state.h"
#include "support/temporary_home.h"
#include "support/test_registry.h"
#include "support/tls_material.h"
#include "support/wait_for.h"
#include "support/window_view.h"

#include <QTest>

using Qt::StringLiterals::operator""_s;
using Qt::StringLiterals::operator""_L1;
using Qt::StringLiterals::operator""_ba;

namespace support {

/// The host that the client under test was built for.
inline QString publicHost()
{
    return QStringLiteral(TARNWICK_PUBLIC_HOST);
}

inline QString defaultBaseUrl()
{
    return QStringLiteral("https://") + publicHost();
}

} // namespace support
