#include "shell/checkfornewversion.h"

#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/weblink.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"

#include <QPointer>

namespace {

/// The transfers and boxes of one check. Each step that waits may find the program at its end, or its window gone.
class Check
{
public:
    Check(QWidget *window, const UpdateServer &server)
        : m_server(server)
        , m_window(window)
        , m_inet(form<frmMainViewer>().Inet1)
    {
    }

    void run()
    {
        if (m_inet->StillExecuting())
            return;
        if (m_server.address.isEmpty()) {
            show(noUpdateServerBox());
            return;
        }
        const bool secure = m_server.address.scheme() == QLatin1String("https");
        m_inet->Protocol = secure ? InternetTransfer::Via::Https : InternetTransfer::Via::Http;
        const Result<QString> published = publishedVersion(fetch("latestversion"));
        if (isOver())
            return;
        if (published)
            tell(versionFinding(*published, localVersion()));
        else
            show(checkFailedBox(published.reason()));
    }

private:
    /// A message that cannot be had is none: the answer itself is known by then.
    void tell(const VersionFinding &finding)
    {
        const std::optional<QString> message = markedText(fetch(finding.messageName));
        if (isOver())
            return;
        if (show(findingBox(finding, message)) != MessageBox::Answer::Yes || isOver())
            return;
        const std::optional<QString> link = markedText(fetch("newerlink"));
        if (isOver())
            return;
        const QUrl address = downloadAddress(m_server, link);
        if (!openWebAddress(address))
            show(downloadNotOpenedBox(address));
    }

    Result<WebText> fetch(const char *name)
    {
        const Hourglass hourglass;
        return m_inet->OpenURL(updateAddress(m_server, name), [this] { return isOver(); });
    }

    bool isOver() const { return globals.ProgramExiting || !m_inet; }

    MessageBox::Answer show(const MessageBox &box)
    {
        return dialogs().show(m_window && m_window->isVisible() ? m_window.data() : nullptr, box);
    }

    UpdateServer m_server;
    QPointer<QWidget> m_window;
    QPointer<InternetTransfer> m_inet;
};

}

void CheckForNewVersion(QWidget *window, const UpdateServer &server)
{
    Check(window, server).run();
}
