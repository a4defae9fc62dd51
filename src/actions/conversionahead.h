#pragma once

#include "actions/conversioncrew.h"

/// The engine that has coming entries read, operated and encoded before the run reaches them, and files written behind
/// it.
///
/// What is done ahead touches nothing and is only a guess: that the entry will be reached with these options, and that
/// its file will still be the same. When the run gets there, a guess that does not hold is thrown away and the work is
/// done afresh. An entry that cannot be read goes on with what the controls hold, step by step, as without this.
class ConversionAhead : public ConversionEngine
{
public:
    ConversionAhead(ConversionClient &client, PolyImage &image, Gvbox &gvbox);
    ~ConversionAhead() override;
    /// False when there are no threads to be had.
    bool works() const { return m_crew.works(); }

    void reach(ConversionPlace place, bool diffuse) override;
    bool isReady() override;
    std::optional<ConversionOperation> operationUnderWay() override;
    QString load(const QString &path, ConversionLoad how, int sizeIndex) override;
    QString operate(const QVector<ConversionStep> &steps) override;
    QString prepare(const SavePlan &plan) override;
    void settle(const QString &path) override { m_crew.settle(path); }
    void settleAll() override { m_crew.settleAll(); }
    void write(const ConversionOutcome &outcome, const SavePlan &plan) override;
    void leave(const ConversionOutcome &outcome) override;
    void stop() override;
    bool isOver() override { return m_crew.isOver(); }

private:
    using Job = ConversionCrew::Job;

    void lookAhead();
    bool advanceCursor(int count, const ConversionOptions &options);
    Job guess(ConversionPlace place, const ConversionOptions &options, bool diffuse) const;
    static void complete(ConversionJob &job, const ConversionOptions &options, bool diffuse);
    Job guessedHere() const;
    Job takeGuess();
    void forget(const Job &job);
    void endEntry();
    void tellFinished();

    ConversionClient &m_client;
    PolyImage &m_image;
    Gvbox &m_gvbox;
    ConversionCrew m_crew;
    std::deque<Job> m_ahead; ///< of this entry and later ones, in order
    ConversionPlace m_here;
    ConversionPlace m_cursor; ///< the next place to look at
    bool m_diffuse = false; ///< as the run has it
    bool m_diffuseAhead = false; ///< as it will be at the cursor
    Job m_job; ///< of the entry under way, as long as the held picture is what it says
    bool m_isOperated = false; ///< its operations are what the run asked for
    bool m_isPrepared = false;
};
