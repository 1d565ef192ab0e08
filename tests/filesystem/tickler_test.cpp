#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "filesystem/ticklers/CountedTickler.h"
#include "filesystem/ticklers/Tickler.h"
#include "text/Texts.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Sink : public TickleImplBase {
  public:
    void SetMessage(const VelmarText& message) override { messages.push_back(message.GetId()); }
    void SetProgress(double position) override { positions.push_back(position); }
    void Tickle() override { ++tickles; }
    void Cancel() { cancelled_ = true; }

    std::vector<long> messages;
    std::vector<double> positions;
    int tickles = 0;
};

TEST(Tickler, ReportsIntoItsRangeOfTheSink) {
    Sink sink;
    const Tickler part(&sink, 0.25, 0.5);
    part.SetProgress(0.5);
    Tickler whole(&sink);
    whole.SetProgress(0.5);
    whole.SetBase(0.5);
    whole.SetScale(0.25);
    whole.SetProgress(1.0);
    EXPECT_THAT(sink.positions, ElementsAre(0.5, 0.5, 0.75));

    part.SetMessage(Texts::copying);
    part.Tickle();
    EXPECT_THAT(sink.messages, ElementsAre(Texts::copying.GetId()));
    EXPECT_EQ(sink.tickles, 1);
    EXPECT_FALSE(part.IsCancelled());
    sink.Cancel();
    EXPECT_TRUE(part.IsCancelled());

    part.BeginSteps(7);
    EXPECT_EQ(part.GetStepCount(), 7u);
    part.NextStep();
    part.NextStep();
    EXPECT_EQ(sink.GetStep(), 3u);
    part.SetStep(6);
    EXPECT_EQ(sink.GetStep(), 6u);
    part.BeginSteps(2);
    EXPECT_EQ(sink.GetStep(), 1u);
}

TEST(Tickler, WithoutASinkReportsNothing) {
    const Tickler tickler;
    tickler.SetProgress(0.5);
    tickler.SetMessage(Texts::copying);
    tickler.BeginSteps(3);
    tickler.NextStep();
    tickler.Tickle();
    EXPECT_FALSE(tickler.IsCancelled());
    EXPECT_EQ(tickler.GetStepCount(), 0u);
    EXPECT_EQ(tickler.GetBase(), 1.0);
    EXPECT_EQ(tickler.GetScale(), 0.0);
    EXPECT_EQ(tickler.Split(3).size(), 3u);
}

std::vector<double> Starts(const std::vector<Tickler>& parts) {
    std::vector<double> starts;
    for (const Tickler& part : parts) {
        starts.push_back(part.GetBase());
    }
    return starts;
}

TEST(Tickler, SplitsItsRangeIntoParts) {
    Sink sink;
    EXPECT_THAT(Starts(Tickler(&sink).Split(4)), ElementsAre(0.0, 0.25, 0.5, 0.75));
    const Tickler upper(&sink, 0.5, 0.5);
    const std::vector<Tickler> parts = upper.Split({1.0, 3.0});
    EXPECT_THAT(Starts(parts), ElementsAre(0.5, 0.625));
    EXPECT_EQ(parts[1].GetScale(), 0.375);
    parts[1].SetProgress(1.0);
    EXPECT_THAT(sink.positions, ElementsAre(1.0));

    EXPECT_THAT(upper.Split(0), IsEmpty());
    EXPECT_THAT(upper.Split(std::vector<double>()), IsEmpty());
    EXPECT_THAT(upper.Split({0.0, 0.0}), IsEmpty());
    EXPECT_THAT(upper.Split({1.0, -1.0}), IsEmpty());
}

TEST(CountedTickler, ReportsEveryStrideUpToTheTotal) {
    Sink sink;
    CountedTickler counter(Tickler(&sink, 0.0, 2.0), 10, 5);
    for (int i = 0; i < 15; ++i) {
        counter.Count();
    }
    EXPECT_THAT(sink.positions, ElementsAre(1.0, 2.0));
    CountedTickler silent(Tickler(&sink), 10, 0);
    silent.Count();
    EXPECT_EQ(sink.positions.size(), 2u);
}

}  // namespace
