#include "ui/main/CapabilityPanel.h"

#include <algorithm>
#include <atomic>

// One run of the intervals: what it works on, owned here so that the window
// may change meanwhile, and what it reports.
struct CapabilityPanel::Job {
    m_CapabilityStudy::Request Request;
    std::vector<double> Values;
    m_CapabilityStudy::Study Study;
    std::atomic<bool> Cancel{false}, Finished{false}, Started{false};
    std::atomic<int> Done{0}, Total{0};
    bool Ok = false;
};

CapabilityPanel::CapabilityPanel(QObject* parent) : QObject(parent) {
    quiet_.setSingleShot(true);
    quiet_.setInterval(kQuiet);
    poll_.setInterval(100);
    connect(&quiet_, &QTimer::timeout, this, [this] { Start(); });
    connect(&poll_, &QTimer::timeout, this, [this] { Poll(); });
}

CapabilityPanel::~CapabilityPanel() {
    Stop();
}

void CapabilityPanel::Stop() {
    quiet_.stop();
    poll_.stop();
    if (job_) job_->Cancel = true;
    if (worker_.joinable()) worker_.join();
    job_.reset();
}

void CapabilityPanel::Show(const m_CapabilityStudy::Request& r) {
    Stop();
    auto job = std::make_shared<Job>();
    job->Request = r;
    if (r.Values) job->Values = *r.Values;
    job->Request.Values = &job->Values;
    study_ = m_CapabilityStudy::Compute(job->Request);
    note_.clear();
    if (m_CapabilityStudy::HasIntervals(job->Request) && job->Values.size() > kMaxValues) {
        note_ = "not computed above " + std::to_string(kMaxValues) + " values";
    } else if (m_CapabilityStudy::HasIntervals(job->Request)) {
        job_ = std::move(job);
        quiet_.start();
    }
    emit Changed();
}

void CapabilityPanel::Clear() {
    Stop();
    note_.clear();
    study_ = {};
    emit Changed();
}

void CapabilityPanel::Start() {
    if (!job_ || job_->Started) return;
    job_->Started = true;
    job_->Study = study_;
    worker_ = std::thread([job = job_] {
        m_Bootstrap::Options o;
        o.Replicates = static_cast<int>(
            std::clamp(kBudget / static_cast<double>(job->Values.size()), 200.0, 1000.0));
        o.Cancel = &job->Cancel;
        o.Progress = [&job = *job](int done, int total) {
            job.Done = done;
            job.Total = total;
        };
        job->Ok = m_CapabilityStudy::AddIntervals(job->Study, job->Request, o);
        job->Finished = true;
    });
    poll_.start();
    emit Changed();
}

void CapabilityPanel::Poll() {
    if (!job_) return poll_.stop();
    if (job_->Finished) {
        if (worker_.joinable()) worker_.join();
        if (job_->Ok) study_ = job_->Study;
        job_.reset();
        poll_.stop();
    }
    emit Changed();
}

std::string CapabilityPanel::Progress() const {
    if (!job_) return note_;
    if (!job_->Started) return "computing...";
    const int total = job_->Total;
    return "computing... " + std::to_string(total > 0 ? 100 * job_->Done / total : 0) + " %";
}

void CapabilityPanel::Wait() {
    if (!job_) return;
    if (!job_->Started) Start();
    if (worker_.joinable()) worker_.join();
    Poll();
}
