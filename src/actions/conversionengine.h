#pragma once

#include "actions/conversion.h"

/// An entry in the order of a run.
struct ConversionPlace
{
    int type = 0;
    int index = 0;
    auto operator<=>(const ConversionPlace &) const = default;
};

/// How a run comes by its pictures and files. Each call does its work, or looks as if it had done it, at the moment of
/// the call. What fails leaves what was there, and is no business of the run.
class ConversionEngine
{
public:
    virtual ~ConversionEngine() = default;

    /// The run comes to this entry next. `diffuse` is the flag as it stands.
    virtual void reach(ConversionPlace, bool /*diffuse*/) { }
    /// Whether the entry reached can be gone through without a wait.
    virtual bool isReady() { return true; }
    /// The operation that this wait is for.
    virtual std::optional<ConversionOperation> operationUnderWay() { return {}; }

    /// Loads the entry reached into the control that reads it. Empty, or why that could not be done.
    virtual QString load(const QString &path, ConversionLoad how, int sizeIndex) = 0;
    /// The operations in their order; each is shown while it runs. Empty, or why the first that failed did.
    virtual QString operate(const QVector<ConversionStep> &steps) = 0;
    /// What the format does to the held picture. The same answer.
    virtual QString prepare(const SavePlan &plan) = 0;

    /// What stands at that path after this is what the run so far has put there.
    virtual void settle(const QString & /*path*/) { }
    /// The same for all paths.
    virtual void settleAll() { }
    /// Writes the held picture; `outcome` tells entry and target.
    virtual void write(const ConversionOutcome &outcome, const SavePlan &plan) = 0;
    /// Nothing is written for this entry.
    virtual void leave(const ConversionOutcome &outcome) = 0;

    /// No entry is reached any more. Files that are to be written still are.
    virtual void stop() { }
    /// Whether the last of them stands, after stop().
    virtual bool isOver() { return true; }
};

/// Whether a step sets an option of the control and leaves the picture alone.
bool isSaveOption(const SaveStep &step);
/// A row's preparation as batch conversion takes it: the steps that change the picture, the next one also when one
/// fails. The options of the control come later, one by one. Empty, or why the first that failed did.
QString preparePicture(const SavePlan &plan, PolyImage &image);
/// One operation; notes the reason of the first that fails.
void operateNoting(const ConversionStep &step, PolyImage &image, QString &failure);
