// The capability study of the curve the window shows, kept up to date: its
// figures at once with every drawing, its intervals (a bootstrap of up to a
// second or two) on a worker thread once the drawing has settled, with
// progress. Changed() tells the window to show the study again.
#pragma once

#include "stats/m_CapabilityStudy.h"

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

class CapabilityPanel : public QObject {
    Q_OBJECT

  public:
    explicit CapabilityPanel(QObject* parent = nullptr);
    ~CapabilityPanel() override;

    // The figures of the request at once (Values are copied); a run for the
    // previous one is cancelled. Intervals, when the request has some, start
    // after kQuiet ms without a new request, so a marker drag does not start a
    // run at every step.
    void Show(const m_CapabilityStudy::Request& r);
    // No figures (a drawing without them).
    void Clear();
    const m_CapabilityStudy::Study& Current() const { return study_; }
    // "computing... 35 %" while the intervals are under way, "computing..."
    // before they start, why they are not computed for a fit to too many
    // values, empty otherwise.
    std::string Progress() const;
    // Blocks until the intervals under way or waiting are in (for the tests
    // and the report, which need the final figures).
    void Wait();

    static constexpr int kQuiet = 250;
    // Past this many values the bootstrap would take minutes (and its
    // intervals would be very narrow): it is not run.
    static constexpr std::size_t kMaxValues = 100000;
    // Up to this many values each replicate draws from the curve: 1,000
    // replicates up to 20,000 values, fewer (at least 200) above.
    static constexpr double kBudget = 2e7;

  signals:
    void Changed();

  private:
    struct Job;
    void Start();
    void Poll();
    void Stop();

    m_CapabilityStudy::Study study_;
    std::shared_ptr<Job> job_;
    std::string note_; // why a fit to data has no intervals
    std::thread worker_;
    QTimer quiet_, poll_;
};
