// unifold-tray-panel: the virtual reader as a person sees it.
#include "tools/panel/catalogue.h"
#include "tools/panel/panel_window.h"

#include <CLI/CLI.hpp>
#include <QApplication>

#include <exception>
#include <iostream>

namespace {

// Exit codes, as those of unifold-tray.
constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

struct Options {
    std::string folder;
    std::string geometry;
};

int showPanel(char *program, Options &options)
{
    std::string option = "-geometry";
    std::vector<char *> arguments = {program};
    if (!options.geometry.empty())
        arguments.insert(arguments.end(), {option.data(), options.geometry.data()});
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    QApplication application(count, arguments.data());
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    tray_panel::installCatalogue(QLocale::system());
    tray_panel::PanelWindow window(options.folder.empty() ? drivers::tray::trayFolder()
                                                          : std::filesystem::path(options.folder));
    window.show();
    return QApplication::exec();
}

int run(int argc, char **argv)
{
    Options options;
    CLI::App app("Shows the virtual reader and what lies in it; a click on a slot puts a card in or takes it out.",
                 "unifold-tray-panel");
    app.set_version_flag("--version", "unifold-tray-panel " UNIFOLD_VERSION);
    app.add_option("--tray", options.folder,
                   "Folder of the tray (else $UNIFOLD_TRAY, else unifold-bench/tray in the XDG data directory)")
        ->type_name("DIR");
    app.add_option("--geometry", options.geometry, "Where the window opens, such as +10+100")->type_name("SPEC");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
    }
    return showPanel(argv[0], options);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::cerr << "unifold-tray-panel: " << error.what() << '\n';
        return kFailed;
    }
}
