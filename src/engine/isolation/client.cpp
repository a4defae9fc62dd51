#include "engine/isolation/client.h"

#include "engine/codecs/pixels.h"
#include "engine/isolation/pool.h"
#include "engine/limits.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <ctime>

#include <fcntl.h>

namespace isolation {

namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr auto copyingPeriod = 2ms; ///< how long finished rows of a picture under way may lie
constexpr auto lastWords = 200ms; ///< for a process that has closed its connection
constexpr int mostLayouts = 4; ///< pictures that one request may ask memory for

/// Of processor time, with the clock on the wall as a second net: a process that sleeps gets no more of that, one that
/// a loaded machine keeps waiting three times as much.
class Deadline
{
public:
    Deadline(qint32 pid, std::chrono::milliseconds patience)
        : m_pid(pid)
        , m_patience(patience)
        , m_tick(std::clamp<nanoseconds>(patience / 10, 20ms, 1s))
    {
        m_timed = clock_getcpuclockid(pid, &m_processClock) == 0;
        m_used = m_usedBefore = used();
        m_nextLook = m_start + m_tick;
    }

    Clock::time_point nextLook() const { return m_nextLook; }
    bool isOver();
    /// Time in which the process had to wait for us.
    void moveBy(nanoseconds time) { m_start += std::chrono::duration_cast<Clock::duration>(time); }

private:
    nanoseconds used() const
    {
        timespec time{};
        return m_timed && clock_gettime(m_processClock, &time) == 0
            ? std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec)
            : 0ns;
    }

    bool wantsToRun() const;

    qint32 m_pid;
    nanoseconds m_patience;
    nanoseconds m_tick;
    clockid_t m_processClock = 0;
    bool m_timed = false;
    nanoseconds m_used{};
    nanoseconds m_usedBefore{};
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_nextLook;
};

// Out of "12 (lumora-decoder) R 1 ...": one that waits for its turn is no sleeper.
bool Deadline::wantsToRun() const
{
    const Descriptor file(open(("/proc/" + QByteArray::number(m_pid) + "/stat").constData(), O_RDONLY | O_CLOEXEC));
    char line[128] = {};
    const ssize_t length = file ? read(file.value(), line, sizeof line - 1) : 0;
    const char *const behindName = length > 0 ? std::strrchr(line, ')') : nullptr;
    return behindName && behindName[1] == ' ' && (behindName[2] == 'R' || behindName[2] == 'D');
}

bool Deadline::isOver()
{
    const Clock::time_point now = Clock::now();
    if (now < m_nextLook)
        return false;
    m_nextLook = now + m_tick;
    const nanoseconds usedNow = used();
    const bool asleep = usedNow - m_used < m_tick / 100 && !wantsToRun();
    m_used = usedNow;
    const nanoseconds waited = now - m_start;
    return usedNow - m_usedBefore >= m_patience || (waited >= m_patience && asleep) || waited >= 3 * m_patience;
}

enum class Fault { None, Gone, TooLong, Nonsense, NoMemory };

/// One request to one process.
class Exchange
{
public:
    Exchange(Pool &pool, Worker &worker, std::chrono::milliseconds patience)
        : m_pool(pool)
        , m_worker(worker)
        , m_deadline(worker.pid, patience)
    {
    }
    ~Exchange() { giveBack(); }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;

    std::optional<Answer> run(const Question &question, Codecs codecs, const EncodedFile &file);
    Fault fault() const { return m_fault; }

private:
    bool sendRequest(Request request, const EncodedFile &file);
    qsizetype nextMessage();
    bool handle(Kind kind, qsizetype bytes);
    bool giveMemory();
    bool layOut(const Need &need, ArenaGiven &given);
    bool copyRows(int rows);
    bool copyFinishedRows();
    std::optional<Answer> takeAnswer(qsizetype bytes, Work work);
    bool receiveFields(qsizetype bytes, const Done &head, QByteArray &fields);
    std::optional<Answer> failed(Fault fault)
    {
        m_fault = fault;
        return {};
    }
    void giveBack()
    {
        if (const qint64 bytes = std::exchange(m_granted, 0); bytes > 0)
            m_pool.giveBack(bytes);
    }
    template <class Message> Message message() const
    {
        Message copy;
        std::memcpy(&copy, m_buffer.constData(), sizeof copy);
        return copy;
    }

    Pool &m_pool;
    Worker &m_worker;
    Deadline m_deadline;
    Fault m_fault = Fault::None;
    QByteArray m_buffer = QByteArray(largestMessage, Qt::Uninitialized);
    qint64 m_granted = 0;
    int m_layouts = 0;
    QImage m_pixels; ///< ours, filled out of the arena
    uchar *m_pixelBytes = nullptr;
    int m_copied = 0; ///< rows
};

bool Exchange::sendRequest(Request request, const EncodedFile &file)
{
    const qint64 bytes = file.bytes.size();
    const auto content = std::span(reinterpret_cast<const uchar *>(file.bytes.constData()), size_t(bytes));
    request.inputBytes = bytes;
    if (bytes < largestMessage - qsizetype(sizeof request)) {
        if (!send(m_worker.connection.value(), bytesOfStruct(request), content))
            return failed(Fault::Gone), false;
        return true;
    }
    if (!m_worker.input || m_worker.input->size() <= bytes) {
        m_worker.input.reset();
        m_worker.input = m_pool.takeArena(bytes + 1);
        if (!m_worker.input)
            return failed(Fault::NoMemory), false;
        request.bringsArena = 1;
    }
    // With a zero behind it, as codecs may expect of a byte array.
    const uchar end = 0;
    if (!m_worker.input->write(0, content) || !m_worker.input->write(bytes, {&end, 1}))
        return failed(Fault::NoMemory), false;
    request.arenaBytes = m_worker.input->size();
    const int brought = request.bringsArena ? m_worker.input->descriptor() : -1;
    if (!send(m_worker.connection.value(), bytesOfStruct(request), {}, brought))
        return failed(Fault::Gone), false;
    return true;
}

/// The bytes of the next message, 0 after a fault. Copies finished rows while it waits.
qsizetype Exchange::nextMessage()
{
    while (true) {
        const Clock::time_point look = m_deadline.nextLook();
        const bool copying = m_copied < m_pixels.height();
        if (waitReadable(m_worker.connection.value(), copying ? std::min(look, Clock::now() + copyingPeriod) : look))
            break;
        if (copying && !copyFinishedRows()) {
            m_fault = Fault::NoMemory;
            return 0;
        }
        if (m_deadline.isOver()) {
            m_fault = Fault::TooLong;
            return 0;
        }
    }
    const Received received =
        receive(m_worker.connection.value(), {reinterpret_cast<uchar *>(m_buffer.data()), size_t(m_buffer.size())});
    if (received.bytes < qsizetype(sizeof(Kind)))
        m_fault = received.bytes == 0 ? Fault::Gone : Fault::Nonsense;
    return m_fault == Fault::None ? received.bytes : 0;
}

bool Exchange::copyRows(int rows)
{
    const qint64 stride = m_pixels.bytesPerLine();
    const qint64 from = m_copied * stride;
    if (rows <= m_copied)
        return true;
    m_copied = rows;
    return m_worker.output->read(arenaHeader + from, {m_pixelBytes + from, size_t(rows * stride - from)});
}

bool Exchange::copyFinishedRows()
{
    const auto &counter = *reinterpret_cast<const std::atomic<quint32> *>(m_worker.output->data());
    return copyRows(int(std::min(counter.load(std::memory_order_acquire), quint32(m_pixels.height()))));
}

/// Checks what is asked for before any memory is taken, then finds it.
bool Exchange::layOut(const Need &need, ArenaGiven &given)
{
    const QSize size(need.width, need.height);
    if (!isAcceptable(size, need.format))
        return false;
    const qint64 bytes = arenaHeader + strideOf(size, need.format) * size.height();
    const Clock::time_point before = Clock::now();
    if (!m_pool.grant(bytes))
        return false;
    m_granted = bytes;
    m_deadline.moveBy(Clock::now() - before);
    if (!m_worker.output || m_worker.output->size() < bytes) {
        m_worker.output.reset();
        m_worker.output = m_pool.takeArena(bytes);
        given.bringsArena = 1;
    }
    QImage pixels = allocateImage(size, QImage::Format(need.format));
    if (!m_worker.output || pixels.isNull() || pixels.bytesPerLine() != strideOf(size, need.format))
        return false;
    m_pixels = std::move(pixels);
    m_pixelBytes = m_pixels.bits();
    reinterpret_cast<std::atomic<quint32> *>(m_worker.output->data())->store(0, std::memory_order_relaxed);
    given.bytes = m_worker.output->size();
    return true;
}

bool Exchange::giveMemory()
{
    if (++m_layouts > mostLayouts)
        return false;
    m_pixels = {};
    m_copied = 0;
    giveBack();
    ArenaGiven given;
    if (!layOut(message<Need>(), given))
        given = {Kind::Arena, 0, 0};
    const int brought = given.bringsArena ? m_worker.output->descriptor() : -1;
    return send(m_worker.connection.value(), bytesOfStruct(given), {}, brought);
}

/// What comes before the answer.
bool Exchange::handle(Kind kind, qsizetype bytes)
{
    if (kind == Kind::Need && bytes == sizeof(Need))
        return giveMemory();
    if (kind != Kind::Ready || bytes != sizeof(Ready) || m_worker.introduced)
        return false;
    m_worker.introduced = true;
    m_pool.noteLayers(message<Ready>().layers);
    return true;
}

bool Exchange::receiveFields(qsizetype bytes, const Done &head, QByteArray &fields)
{
    const std::optional<qint64> wanted = fieldBytes(head);
    fields = m_buffer.mid(sizeof(Done), bytes - qsizetype(sizeof(Done)));
    while (wanted && fields.size() < *wanted) {
        const qsizetype got = nextMessage();
        if (m_fault != Fault::None)
            return false;
        if (got <= qsizetype(sizeof(Kind)) || message<Kind>() != Kind::Piece)
            break;
        fields.append(m_buffer.constData() + sizeof(Kind), got - qsizetype(sizeof(Kind)));
    }
    if (!wanted || fields.size() != *wanted)
        m_fault = Fault::Nonsense;
    return m_fault == Fault::None;
}

std::optional<Answer> Exchange::takeAnswer(qsizetype bytes, Work work)
{
    const Done head = message<Done>();
    QByteArray fields;
    if (!receiveFields(bytes, head, fields))
        return {};
    QImage pixels;
    if (head.succeeded && head.inArena) {
        const bool asLaidOut = !m_pixels.isNull() && m_pixels.size() == QSize(head.width, head.height)
            && quint32(m_pixels.format()) == head.format;
        if (!asLaidOut)
            return failed(Fault::Nonsense);
        if (!head.rowsAreFinal)
            m_copied = 0;
        if (!copyRows(m_pixels.height()))
            return failed(Fault::NoMemory);
        pixels = std::move(m_pixels);
    }
    std::optional<Answer> answer = unpacked(head, fields, work, std::move(pixels));
    if (!answer)
        m_fault = Fault::Nonsense;
    return answer;
}

std::optional<Answer> Exchange::run(const Question &question, Codecs codecs, const EncodedFile &file)
{
    Request request;
    request.work = question.work;
    request.codecs = codecs;
    request.targetWidth = question.hint.target.width();
    request.targetHeight = question.hint.target.height();
    request.sizeIndex = question.hint.sizeIndex;
    request.page = question.hint.page;
    request.companionBytes = file.companion.size();
    if (file.extension.size() <= qsizetype(request.extension.size())) {
        request.extensionLength = quint32(file.extension.size());
        std::memcpy(request.extension.data(), file.extension.utf16(), size_t(file.extension.size()) * 2);
    }
    if (!sendRequest(request, file))
        return {};
    while (true) {
        const qsizetype bytes = nextMessage();
        if (m_fault != Fault::None)
            return {};
        const Kind kind = message<Kind>();
        if (kind == Kind::Done && bytes >= qsizetype(sizeof(Done)))
            return takeAnswer(bytes, question.work);
        if (!handle(kind, bytes))
            return failed(Fault::Nonsense);
    }
}

Answer refusal(const QString &reason)
{
    Answer answer;
    answer.reason = reason;
    return answer;
}

/// What a request came to. Nothing: there are no processes here.
struct Outcome
{
    std::optional<Answer> answer;
    bool processFailed = false;
};

QString faultText(Fault fault, const QString &end, std::chrono::milliseconds patience)
{
    switch (fault) {
    case Fault::TooLong:
        return QCoreApplication::translate("Engine", "decoding took longer than %1 seconds")
            .arg(double(patience.count()) / 1000);
    case Fault::Nonsense:
        return QCoreApplication::translate("Engine", "the decoder process gave an answer that makes no sense");
    case Fault::NoMemory:
        return QCoreApplication::translate("Engine", "no memory for the decoder process");
    default:
        return end;
    }
}

Outcome request(Pool &pool, Family family, const Question &question, Codecs codecs, const EncodedFile &wanted)
{
    // The companion of the few files that have one goes behind the file.
    const EncodedFile file = wanted.companion.isEmpty()
        ? wanted
        : EncodedFile{wanted.bytes + wanted.companion, wanted.extension, wanted.companion};
    Pool::Lease lease = pool.acquire(family);
    if (lease.lack == Pool::Lack::NoProcesses)
        return {};
    if (lease.lack == Pool::Lack::NoWorker)
        return {refusal(QCoreApplication::translate("Engine", "no decoder process could be started")), true};
    if (lease.lack == Pool::Lack::Stopped)
        return {refusal(QCoreApplication::translate("Engine", "decoding was stopped")), true};
    const std::chrono::milliseconds patience = pool.patienceFor(file.bytes.size());
    std::optional<Answer> answer;
    Fault fault;
    {
        Exchange exchange(pool, *lease.worker, patience);
        answer = exchange.run(question, codecs, file);
        fault = exchange.fault();
    }
    if (answer) {
        pool.release(std::move(lease.worker));
        return {std::move(answer), false};
    }
    const QString end = pool.discard(std::move(lease.worker), fault == Fault::Gone ? lastWords : 0ms);
    return {refusal(faultText(fault, end, patience)), true};
}

}

std::optional<Answer> ask(const Question &question, const EncodedFile &file)
{
    bool stopped = false;
    const std::shared_ptr<Pool> pool = currentPool(&stopped);
    if (!pool)
        return stopped ? std::optional(refusal(QCoreApplication::translate("Engine", "decoding was stopped")))
                       : std::nullopt;
    Codecs codecs = question.codecs;
    QString reasons;
    if (question.work != Work::ReadTexts && builtInCodecKnows(file)) {
        Outcome first = request(*pool, Family::Quick, question, Codecs::BuiltIn, file);
        // A process that came to grief is not answered with a second one for the same file.
        if (!first.answer || first.answer->succeeded || first.processFailed || codecs == Codecs::BuiltIn)
            return std::move(first.answer);
        reasons = first.answer->reason;
        codecs = Codecs::AfterBuiltIn;
    }
    if (codecs == Codecs::BuiltIn)
        return refusal(QCoreApplication::translate("Engine", "no decoder for this file"));
    Outcome outcome = request(*pool, Family::Full, question, codecs, file);
    if (outcome.answer && !outcome.answer->succeeded && !reasons.isEmpty())
        outcome.answer->reason =
            reasons + (outcome.answer->reason.isEmpty() ? QString() : QStringLiteral("; ")) + outcome.answer->reason;
    return std::move(outcome.answer);
}

}
