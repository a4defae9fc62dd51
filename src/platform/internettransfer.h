#pragma once

#include "engine/result.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <functional>

/// What a web server has answered.
struct WebText
{
    int status = 0; ///< of HTTP: 200 for a page that is there
    QString type; ///< as the server calls it, in small letters and without parameters: "text/plain"; may be empty
    /// UTF-8 without its byte order mark, or Windows-1252 where it is not UTF-8.
    QString text;
};

/// Fetches short texts from the web, one at a time and without freezing the program.
///
/// A transfer takes three seconds and 64 KiB at most, and five redirections, to http and https only and never from
/// https to http. It stores nothing, sends no cookies, and takes neither compressed nor binary content.
class InternetTransfer : public QObject
{
    Q_OBJECT
public:
    enum class Via { Nothing = 0, Http = 4, Https = 5 };

    using QObject::QObject;

    /// The only scheme that OpenURL() takes.
    Via Protocol = Via::Nothing;

    /// From the beginning of OpenURL() to its return.
    bool StillExecuting() const { return !m_current.isNull(); }

    /// Fetches the body at `url` and lets events in until it is there. An answer of any status is one; a failure is
    /// when there is none, or one that is no short text. `givenUp` is asked after each event: true ends the wait.
    Result<WebText> OpenURL(const QUrl &url, const std::function<bool()> &givenUp = {});

private:
    QPointer<QObject> m_current;
};
