// pondera-cli data and the capability object of pnc, run as a script would.
#include "tests/app/JsonReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace {

// Standard output and error of one run with `input` on standard input, and its status.
std::pair<int, std::string> PonderaCli(const std::string& args, const std::string& input = "") {
    const std::string cmd = "printf '" + input + "' | '" + PONDERA_CLI + "' " + args + " 2>&1";
    FILE* pipe = popen(cmd.c_str(), "r");
    std::string out;
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, pipe)) > 0;)
        out.append(buf, n);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

TEST(CliData, AnswersWithMomentsFitPncAndCapability) {
    const auto [status, out] =
        PonderaCli("data - --lsl 9 --usl 12 --target 10",
                   "Diameter\\n10.1\\n10.3\\n\\n9.8;10.0\\n10.6\\t10.2\\n11.5\\n");
    ASSERT_EQ(status, 0) << out;
    const json_reader::Value v = json_reader::Parse(out);
    EXPECT_EQ(v.N("n"), 7);
    EXPECT_NEAR(v.N("mean"), 72.5 / 7, 1e-13);
    EXPECT_EQ(v.S("fit.type") + " " + v.S("fit.message"), "SB Success");
    EXPECT_EQ(v.N("total"), v.N("lower") + v.N("upper"));
    EXPECT_GT(v.N("upper"), 0);
    EXPECT_EQ(v.N("capability.ppk"), std::min(v.N("capability.ppl"), v.N("capability.ppu")));
    EXPECT_EQ(v.Size.at("errors"), 0u);

    const auto [bad, message] = PonderaCli("data -", "x\\n1\\n2\\nabc\\n5\\n");
    EXPECT_EQ(bad, 2);
    EXPECT_EQ(message.rfind("pondera-cli data: line 4: \"abc\" is not a number\n", 0), 0u)
        << message;

    const json_reader::Value pnc =
        json_reader::Parse(PonderaCli("pnc Normal 10 2 --usl 13").second);
    EXPECT_NEAR(pnc.N("capability.ppu"), 0.5, 1e-15);
    EXPECT_EQ(pnc.Nulls, (std::vector<std::string>{"capability.pp", "capability.ppl"}));
}

} // namespace
