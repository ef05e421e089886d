// The help's full-text search over 1,000 generated pages of 3-8 KB, each read
// from disk at every search as the viewer does, beside `grep -ril` over the
// same folder in the same run. A term in few pages; the same with 20 hostile
// pages among them; and a term with a blank, which every page must be
// stripped for.
#include "BenchSupport.h"
#include "HelpText.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <random>

namespace {

constexpr int PageCount = 1000;
const QString Term = QStringLiteral("flashpoint");

struct Corpus {
    QTemporaryDir dir;
    QStringList sources;
    int planted = 0;
};

QString MakePage(std::mt19937& random, int index, bool withTerm)
{
    static const QStringList words = QString::fromLatin1(
        "the vexil firmware load folder revision device utility check window log trace server file notes "
        "release button press connect USB cable transceiver erase packet progress question answer "
        "caf&eacute; &amp; &quot;quoted&quot; &#8212; step").split(QLatin1Char(' '));
    QString page = QStringLiteral("<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\">\n<html><head><title>Page %1"
                                  "</title><link rel=\"stylesheet\" href=\"help.css\"></head>\n<body>\n<h1>Page %1</h1>\n")
                       .arg(index);
    const int size = 3000 + static_cast<int>(random() % 5000);
    while (page.size() < size) {
        page += QStringLiteral("<p>");
        for (int w = 0; w < 40; ++w) {
            const QString& word = words[static_cast<int>(random() % words.size())];
            page += (w % 13 == 5 ? QStringLiteral("<b>") + word + QStringLiteral("</b>") : word) + QLatin1Char(' ');
        }
        if (withTerm && page.size() > size / 2 && !page.contains(Term))
            page += Term + QLatin1Char(' ');
        page += QStringLiteral("<a href=\"page%1.htm\">more</a></p>\n").arg(random() % PageCount);
    }
    return page + QStringLiteral("</body></html>\n");
}

// A "<" with carriage returns and asterisks, the term before it: the tag expression backtracks.
QString HostilePage()
{
    return QStringLiteral("<html><body>") + Term + QLatin1Char(' ')
        + (QStringLiteral("<") + QStringLiteral("\r*").repeated(40) + QStringLiteral(">\n")).repeated(60);
}

Corpus& Pages(bool hostile)
{
    static Corpus plain, withHostile;
    Corpus& corpus = hostile ? withHostile : plain;
    if (!corpus.sources.isEmpty())
        return corpus;
    std::mt19937 random(16);
    for (int i = 0; i < PageCount; ++i) {
        const QString name = QStringLiteral("page%1.htm").arg(i);
        const bool withTerm = i % 125 == 7;
        QFile file(QDir(corpus.dir.path()).filePath(name));
        (void)file.open(QIODevice::WriteOnly);
        file.write((hostile && i % 50 == 3 ? HostilePage() : MakePage(random, i, withTerm)).toUtf8());
        corpus.sources << name;
        corpus.planted += withTerm;
    }
    return corpus;
}

int Search(Corpus& corpus, const QString& term)
{
    int hits = 0;
    for (const QString& source : corpus.sources)
        hits += HelpText::SearchPage(term, source, corpus.dir.path());
    return hits;
}

int Grep(Corpus& corpus, const QString& term)
{
    QProcess grep;
    grep.start(QStringLiteral("grep"), {QStringLiteral("-ril"), QStringLiteral("--"), term, corpus.dir.path()});
    grep.waitForFinished(60000);
    return static_cast<int>(grep.readAllStandardOutput().count('\n'));
}

void SearchBesideGrep(benchmark::State& state, bool hostile, const QString& term)
{
    Corpus& corpus = Pages(hostile);
    // One of each first, so both read the pages from the page cache.
    int hits = Search(corpus, term), grepHits = Grep(corpus, term);
    PeerTimes times;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        hits = Search(corpus, term);
        times.ours.push_back(timer.nsecsElapsed() / 1e9);
        state.SetIterationTime(times.ours.back());
        timer.restart();
        grepHits = Grep(corpus, term);
        times.peer.push_back(timer.nsecsElapsed() / 1e9);
    }
    state.counters["hits"] = hits;
    state.counters["grep_hits"] = grepHits;
    state.counters["grep_ms"] = Median(times.peer) * 1000;
    state.counters["ratio_vs_grep"] = times.Ratio();
    if (!hostile && term == Term && hits != corpus.planted)
        state.SkipWithError("the search missed planted pages");
}

void BM_SearchFewHits(benchmark::State& state) { SearchBesideGrep(state, false, Term); }
void BM_SearchWithHostilePages(benchmark::State& state) { SearchBesideGrep(state, true, Term); }
void BM_SearchEveryPageStripped(benchmark::State& state) { SearchBesideGrep(state, false, QStringLiteral("vexil firmware")); }

BENCHMARK(BM_SearchFewHits)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(Runs(30));
BENCHMARK(BM_SearchWithHostilePages)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(Runs(10));
BENCHMARK(BM_SearchEveryPageStripped)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(Runs(10));

} // namespace

BENCHMARK_MAIN();
