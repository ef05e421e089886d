#include "VexilCtl.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QStringDecoder>

#include <cstdio>

namespace {

const char* const Description = R"(Keeps a Vexil on current firmware from a terminal or a script.

Commands:
  status        The Vexil's firmware revision (or why it cannot be opened),
                the firmware folder and its newest revision, and whether new
                firmware is available.
  verify FILE   Reads and checks an Intel HEX firmware file as a load would;
                names the first bad record.
  load [FILE]   Programs FILE (default: the newest firmware file in the
                folder) into the Vexil, after the same checks as the Vexil
                Utility, and checks the revision it then reports. Ctrl+C
                before the flash erase cancels; after it, a second Ctrl+C is
                needed, since stopping then leaves the Vexil without firmware.
                FILE must be named vexil<revision>.hex. A revision older
                than the Vexil's, or the same, is loaded only with
                --allow-older or --allow-reinstall. A failed load says what
                the Vexil now holds: untouched, erased, or written but not
                confirmed.
  fetch         Copies the newest firmware file and its release notes from
                the firmware server into the folder, when it is newer than the
                folder's, and checks it.

The folder is --folder, else the Vexil Utility's (its preferences file
VexilUtilPrefs), else the default firmware folder. fetch uses the server named
by the preference keys FTPServer and FTPPort when they are set.

Exit codes:
  0    success (status: new firmware is available to load)
  2    usage error
  3    no Vexil found
  4    the Vexil refused or failed (no answer, failed load, wrong revision
       after the load), or the Vexil Utility is running and owns it
  5    firmware file missing or unsound
  6    network failure: the server could not be reached or the file fetched
  7    nothing to do (status: the Vexil runs the newest firmware in the
       folder; fetch: the folder already has the server's newest)
  8    load: not loaded, the file's revision is older than the Vexil's or
       the same (see --allow-older, --allow-reinstall)
  130  interrupted by Ctrl+C

--sim takes comma-separated settings for the simulated Vexil: absent, silent
(opens but never answers), stale (keeps its old revision after a load),
revision=N (0-255, default 112), latency-us=N (default 1000), erase-ms=N
(default 1500), unplug=N (unplugged after its Nth report), missed-syncs=N
(the first N syncs after a load go unanswered), flash=PATH (after a run that
erased the flash, its contents are written to PATH).)";

} // namespace

int main(int argc, char* argv[])
{
    // File names reach Qt as UTF-8 text; bytes that are not UTF-8 would turn
    // into a different name, so such a name is refused with a way out.
    for (int i = 1; i < argc; ++i) {
        QStringDecoder utf8(QStringDecoder::Utf8);
        const QString decoded = utf8.decode(QByteArrayView(argv[i]));
        if (utf8.hasError()) {
            std::fprintf(stderr, "vexilctl: \"%s\" holds bytes that are not UTF-8, so it cannot be used as a file or "
                                 "folder name; rename it (for example with convmv) and try again\n", argv[i]);
            return VexilCtl::Usage;
        }
    }
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vexilctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEXILCTL_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromUtf8(Description));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help."));
    const QCommandLineOption version(QStringLiteral("version"), QStringLiteral("Shows the version."));
    const QCommandLineOption folder(QStringLiteral("folder"), QStringLiteral("The firmware folder to use."),
                                    QStringLiteral("PATH"));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Writes each result as one JSON object on a line of its own."));
    const QCommandLineOption quiet({QStringLiteral("q"), QStringLiteral("quiet")},
                                   QStringLiteral("Writes only results and errors: no log lines, no progress."));
    const QCommandLineOption simulate(QStringLiteral("simulate"),
                                      QStringLiteral("Works on a simulated Vexil instead of the USB device."));
    const QCommandLineOption sim(QStringLiteral("sim"), QStringLiteral("Settings of the simulated Vexil (see above)."),
                                 QStringLiteral("SETTINGS"));
    const QCommandLineOption allowOlder(QStringLiteral("allow-older"),
                                        QStringLiteral("load: also loads a revision older than the Vexil's."));
    const QCommandLineOption allowReinstall(QStringLiteral("allow-reinstall"),
                                            QStringLiteral("load: also loads the revision the Vexil already runs."));
    parser.addOptions({help, version, folder, json, quiet, simulate, sim, allowOlder, allowReinstall});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("status, verify, load or fetch."),
                                 QStringLiteral("command [FILE]"));

    if (!parser.parse(QCoreApplication::arguments())) {
        std::fprintf(stderr, "vexilctl: %s\nTry 'vexilctl --help'.\n", parser.errorText().toLocal8Bit().constData());
        return VexilCtl::Usage;
    }
    if (parser.isSet(help)) {
        std::fputs(parser.helpText().toLocal8Bit().constData(), stdout);
        return VexilCtl::Success;
    }
    if (parser.isSet(version)) {
        std::printf("vexilctl %s\n", VEXILCTL_VERSION);
        return VexilCtl::Success;
    }
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty()) {
        std::fputs("vexilctl: no command given\nTry 'vexilctl --help'.\n", stderr);
        return VexilCtl::Usage;
    }
    const QString command = arguments.takeFirst();

    VexilCtl::Options options;
    options.folder = parser.value(folder);
    options.json = parser.isSet(json);
    options.quiet = parser.isSet(quiet);
    options.simulate = parser.isSet(simulate);
    options.sim = parser.value(sim);
    options.allowOlder = parser.isSet(allowOlder);
    options.allowReinstall = parser.isSet(allowReinstall);
    VexilCtl ctl(options);
    return ctl.Run(command, arguments);
}
