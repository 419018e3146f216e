// The panel beside a bare window with as many widgets of the same kinds: from nothing to the first complete paint. One edit
// with its redrawing, and the import of new records into the open panel. Drawn without a display.
#include "host/fonts_ahead.h"
#include "pane/drevix_pane.h"
#include "platform/base/status.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace drevix;

const QSize kWindowSize(900, 700);
constexpr const char *kOpenPanel = "--open-panel";
constexpr const char *kOpenBareWindow = "--open-bare-window";
constexpr const char *kKindsVariable =
    "PANEL_BENCH_KINDS"; // one letter a widget, for the bare window's process

AppPrefs MakeNamedRecord(int number) {
    AppPrefs prefs = gDefaultGlobalPrefs;
    prefs.application = kNoSignature;
    const std::string name = "Application " + std::to_string(number);
    getPascalString(name, prefs.appFileName.data(), 63);
    getPascalString(name, prefs.appName.data(), 63);
    return prefs;
}

QBaseOwner MakeSettings(int records) {
    QBaseOwner base = NewDrevixBase();
    std::ignore = StoreAppPrefs(base.get(), gDefaultGlobalPrefs, kNoRecord);
    for (int i = 1; i < records; ++i) {
        std::ignore = StoreAppPrefs(base.get(), MakeNamedRecord(i), kNoRecord);
    }
    QBaseSetUserLong(base.get(), kPanelVersion);
    return base;
}

// The settings of this process's user: a folder of its own.
void SaveSettings(int records) {
    const std::string path = std::string(std::getenv("XDG_CONFIG_HOME")) + "/com.halcyra.drevix.prefs";
    if (SaveDevicePrefsToPath(MakeSettings(records).get(), path) != noErr) {
        std::abort();
    }
}

// The panel in a window, as the host makes it, without the resources.
class OpenPanel {
  public:
    OpenPanel() {
        auto *const layout = new QVBoxLayout(&fWindow);
        layout->addWidget(fPane.mainView());
        fPane.mainViewDidLoad();
        fWindow.resize(kWindowSize);
        fWindow.show();
        fPane.didSelect();
        QCoreApplication::processEvents();
    }
    QWidget &Window() { return fWindow; }
    DrevixPane &Pane() { return fPane; }

  private:
    DrevixPane fPane{PaneBundle{FSRef{}, kPanelVersion}};
    QWidget fWindow;
};

template <class Widget>
QWidget *Make() {
    return new Widget;
}

// The kinds of widgets that a window is made of, by the class that a panel's widget is of or descends from.
struct WidgetKind {
    const char *className;
    QWidget *(*make)();
};
constexpr auto kWidgetKinds = std::to_array<WidgetKind>({
    {"QLabel", Make<QLabel>},
    {"QPushButton", Make<QPushButton>},
    {"QToolButton", Make<QToolButton>},
    {"QCheckBox", Make<QCheckBox>},
    {"QRadioButton", Make<QRadioButton>},
    {"QComboBox", Make<QComboBox>},
    {"QLineEdit", Make<QLineEdit>},
    {"QSlider", Make<QSlider>},
    {"QListView", Make<QListView>},
    {"QSplitter", Make<QSplitter>},
    {"QGroupBox", Make<QGroupBox>},
    {"QTabWidget", Make<QTabWidget>},
    {"QStackedWidget", Make<QStackedWidget>},
    {"QWidget", Make<QWidget>},
});

// The kinds of the panel's widgets. What a compound widget makes for itself comes with it in the bare window too.
std::vector<const WidgetKind *> KindsOf(const QWidget &panel) {
    std::vector<const WidgetKind *> kinds;
    for (const QWidget *widget : panel.findChildren<QWidget *>()) {
        const QString name = widget->objectName();
        if (name.startsWith(QLatin1String("qt_")) || widget->parentWidget()->inherits("QComboBox") ||
            widget->parentWidget()->inherits("QAbstractScrollArea") ||
            widget->inherits("QComboBoxPrivateContainer") || widget->parentWidget()->inherits("QTabWidget") ||
            widget->parentWidget()->inherits("QTabBar")) {
            continue;
        }
        const auto kind = std::ranges::find_if(
            kWidgetKinds, [&](const WidgetKind &candidate) { return widget->inherits(candidate.className); });
        kinds.push_back(&*kind);
    }
    return kinds;
}

// As many widgets of each kind as the panel has, without making a panel.
std::vector<const WidgetKind *> BareKinds() {
    const QByteArray counts = qgetenv(kKindsVariable);
    std::vector<const WidgetKind *> kinds;
    for (const char index : counts) {
        kinds.push_back(&kWidgetKinds.at(static_cast<std::size_t>(index - 'a')));
    }
    return kinds;
}

std::unique_ptr<QWidget> OpenBareWindow(const std::vector<const WidgetKind *> &kinds) {
    auto window = std::make_unique<QWidget>();
    auto *const layout = new QGridLayout(window.get());
    const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(kinds.size()))));
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        layout->addWidget(kinds[i]->make(), static_cast<int>(i) / columns, static_cast<int>(i) % columns);
    }
    window->resize(kWindowSize);
    window->show();
    QCoreApplication::processEvents();
    return window;
}

void Start_Panel(benchmark::State &state) {
    SaveSettings(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        OpenPanel panel;
    }
}
BENCHMARK(Start_Panel)->Arg(30)->Arg(10000)->Unit(benchmark::kMillisecond);

void Start_BareWindow(benchmark::State &state) {
    const std::vector<const WidgetKind *> kinds = BareKinds();
    for (auto _ : state) {
        const std::unique_ptr<QWidget> window = OpenBareWindow(kinds);
    }
    state.counters["widgets"] = static_cast<double>(kinds.size());
}
BENCHMARK(Start_BareWindow)->Unit(benchmark::kMillisecond);

// A whole process, from its start until the window is painted and it ends: this program itself, with `option`.
void StartProcess(benchmark::State &state, const char *option) {
    SaveSettings(30);
    for (auto _ : state) {
        if (QProcess::execute(QCoreApplication::applicationFilePath(), {QString::fromLatin1(option)}) != 0) {
            state.SkipWithError("the process failed");
        }
    }
}
BENCHMARK_CAPTURE(StartProcess, Panel, kOpenPanel)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(StartProcess, BareWindow, kOpenBareWindow)->Unit(benchmark::kMillisecond)->UseRealTime();

// The slider goes from end to end: the handler, the redrawing and the paint. The argument is the number of records.
void Edit_Slider(benchmark::State &state) {
    SaveSettings(static_cast<int>(state.range(0)));
    OpenPanel panel;
    auto *const slider =
        panel.Window().findChild<QAbstractSlider *>(QStringLiteral("uiSettingsSliderNavSens"));
    int value = slider->minimum();
    for (auto _ : state) {
        value = value == slider->minimum() ? slider->maximum() : slider->minimum();
        slider->setSliderPosition(value);
        QCoreApplication::processEvents();
    }
}
BENCHMARK(Edit_Slider)->Arg(30)->Arg(10000)->Unit(benchmark::kMillisecond);

// A key in the search of actions, until its rows are painted.
void Find_Key(benchmark::State &state) {
    SaveSettings(30);
    OpenPanel panel;
    panel.Window().findChild<QAbstractButton *>(QStringLiteral("uiSettingsButtonFind"))->click();
    auto *const query = panel.Window().findChild<QLineEdit *>(QStringLiteral("uiFindQuery"));
    bool isLonger = false;
    for (auto _ : state) {
        isLonger = !isLonger;
        query->setText(isLonger ? QStringLiteral("s") : QString());
        QCoreApplication::processEvents();
    }
}
BENCHMARK(Find_Key)->Unit(benchmark::kMillisecond);

void Import_NewRecords(benchmark::State &state) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("new.veltrana"));
    AppPrefs record;
    int number = 0;
    const auto next = [&] {
        record = MakeNamedRecord(++number);
        return number > state.range(0) ? nullptr : &record;
    };
    if (WriteAppPrefsFile(file.toStdString(), next) != noErr) {
        std::abort();
    }
    SaveSettings(1);
    for (auto _ : state) {
        state.PauseTiming();
        auto panel = std::make_unique<OpenPanel>();
        state.ResumeTiming();
        if (panel->Pane().ImportAppPrefs(file) != noErr) {
            state.SkipWithError("the import failed");
        }
        QCoreApplication::processEvents();
        state.PauseTiming();
        panel.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(Import_NewRecords)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    const QTemporaryDir settings;
    if (argc == 1 ||
        std::strncmp(argv[1], "--open", 6) != 0) { // else the process that started this one has done it
        qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
        qputenv("HOME", settings.path().toLocal8Bit()); // nothing of the user's is read or written
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], kOpenPanel) == 0) {
        const std::future<void> fonts = LookForFontsAhead(); // as the host does
        const OpenPanel panel;
        std::_Exit(0); // what is timed is its start
    }
    if (argc == 2 && std::strcmp(argv[1], kOpenBareWindow) == 0) {
        const std::unique_ptr<QWidget> window = OpenBareWindow(BareKinds());
        std::_Exit(0);
    }
    SaveSettings(2);
    QByteArray kinds;
    for (const WidgetKind *kind : KindsOf(OpenPanel().Window())) {
        kinds += static_cast<char>('a' + (kind - kWidgetKinds.data()));
    }
    qputenv(kKindsVariable, kinds);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
