#include "platform/internettransfer.h"

#include "platform/textdecoding.h"
#include "platform/weblink.h"
#include "ui/yield.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>

namespace {

constexpr std::chrono::seconds longestTransfer(3);
constexpr qint64 longestBody = 64 * 1024; ///< bytes
constexpr int mostRedirections = 5;
constexpr int firstErrorStatus = 400;

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    // http to http, http to https, https to https; nothing else.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirections);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    for (const auto attribute : {QNetworkRequest::CookieLoadControlAttribute,
             QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::AuthenticationReuseAttribute})
        request.setAttribute(attribute, QNetworkRequest::Manual);
    request.setRawHeader("Accept", "text/plain");
    // Asked for like this the body is left as it is: nothing unpacks to more than the limit.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Lumora/" LUMORA_VERSION));
    return request;
}

bool isBinary(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar character) {
        const char16_t code = character.unicode();
        return (code < u' ' && code != u'\t' && code != u'\r' && code != u'\n') || code == 0x7f;
    });
}

/// One transfer, with everything that belongs to it: it ends when this goes.
class Transfer : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(InternetTransfer)

public:
    explicit Transfer(const QUrl &url)
        : m_reply(m_network.get(requestFor(url)))
    {
        m_reply->setReadBufferSize(longestBody + 1);
        connect(m_reply, &QNetworkReply::readyRead, this, &Transfer::take);
        connect(m_reply, &QNetworkReply::finished, this, &Transfer::end);
        connect(&m_limit, &QTimer::timeout, this, [this] {
            endWith(Failure{tr("The server did not answer within %1 seconds.").arg(longestTransfer.count())});
        });
        m_limit.setSingleShot(true);
        m_limit.start(longestTransfer);
    }

    ~Transfer() override
    {
        m_reply->disconnect(this);
        m_reply->abort();
    }
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    bool hasEnded() const { return m_outcome.has_value(); }
    Result<WebText> outcome() const { return m_outcome ? *m_outcome : Failure{tr("The transfer was given up.")}; }

private:
    void take()
    {
        m_body += m_reply->readAll();
        if (m_body.size() > longestBody)
            endWith(Failure{tr("The server's answer is too long.")});
    }

    void end()
    {
        take();
        const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // A page that is not there is an answer like any other; whoever asked judges by its status.
        if (m_reply->error() == QNetworkReply::NoError || status >= firstErrorStatus)
            endWith(answer(status));
        else
            endWith(Failure{m_reply->errorString()});
    }

    Result<WebText> answer(int status) const
    {
        WebText answer;
        answer.status = status;
        const QString type = m_reply->header(QNetworkRequest::ContentTypeHeader).toString();
        answer.type = type.section(QLatin1Char(';'), 0, 0).trimmed().toLower();
        answer.text = textFromBytes(m_body);
        if (answer.text.startsWith(QChar::ByteOrderMark))
            answer.text.remove(0, 1);
        if (isBinary(answer.text))
            return Failure{tr("The server's answer is not a text.")};
        return answer;
    }

    /// What has ended first counts; the reply's own end follows the abort.
    void endWith(Result<WebText> outcome)
    {
        if (m_outcome)
            return;
        m_outcome = std::move(outcome);
        m_reply->abort();
    }

    QNetworkAccessManager m_network;
    QNetworkReply *m_reply; ///< of m_network
    QTimer m_limit;
    QByteArray m_body;
    std::optional<Result<WebText>> m_outcome;
};

}

Result<WebText> InternetTransfer::OpenURL(const QUrl &url, const std::function<bool()> &givenUp)
{
    const QLatin1String scheme(Protocol == Via::Https ? "https" : Protocol == Via::Http ? "http" : "");
    if (StillExecuting() || !isWebAddress(url) || url.scheme() != scheme)
        return Failure{tr("The address cannot be fetched.")};
    const auto transfer = std::make_unique<Transfer>(url);
    // Nothing of this object is touched after the wait: its window may be gone by then.
    m_current = transfer.get();
    YieldUntil([&] { return transfer->hasEnded() || (givenUp && givenUp()); });
    return transfer->outcome();
}
