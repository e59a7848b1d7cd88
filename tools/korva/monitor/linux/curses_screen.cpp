#define NCURSES_NOMACROS  // its short names would replace everybody's
#include <curses.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/monitor/linux/terminal_guard.h"
#include "korva/monitor/screen.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

constexpr short quietPair = 1;
constexpr short loudPair = 2;
constexpr short overPair = 3;

void prepareColours() {
    if (std::getenv("NO_COLOR") != nullptr || !has_colors() || start_color() == ERR) {
        return;
    }
    use_default_colors();
    init_pair(quietPair, COLOR_GREEN, -1);
    init_pair(loudPair, COLOR_YELLOW, -1);
    init_pair(overPair, COLOR_RED, -1);
}

attr_t attributesOf(Style style) {
    switch (style) {
        case Style::title:
            return A_BOLD;
        case Style::faint:
            return A_DIM;
        case Style::selected:
            return A_REVERSE;
        case Style::quiet:
            return static_cast<attr_t>(COLOR_PAIR(quietPair));
        case Style::loud:
            return static_cast<attr_t>(COLOR_PAIR(loudPair));
        case Style::over:
            return static_cast<attr_t>(COLOR_PAIR(overPair)) | A_BOLD;
        case Style::plain:
            break;
    }
    return A_NORMAL;
}

MonitorKey keyOf(int code) {
    switch (code) {
        case KEY_UP:
        case 'k':
            return MonitorKey::up;
        case KEY_DOWN:
        case 'j':
            return MonitorKey::down;
        case '\t':
            return MonitorKey::nextMeters;
        case '1':
            return MonitorKey::meters1;
        case '2':
            return MonitorKey::meters2;
        case '3':
            return MonitorKey::meters3;
        case '4':
            return MonitorKey::meters4;
        case 'q':
        case 'Q':
            return MonitorKey::quit;
        default:
            return MonitorKey::other;
    }
}

/// Whether the cursor of the terminal that was opened can be put anywhere: some only write on and on.
bool canBePainted() {
    const char* const move = tigetstr("cup");
    return move != nullptr && move != reinterpret_cast<const char*>(-1);
}

class CursesScreen : public Screen {
public:
    CursesScreen(SCREEN* opened, const termios& modes) : terminal(opened) {
        guard.emplace(modes);
        cbreak();
        noecho();
        curs_set(0);
        set_escdelay(25);
        keypad(stdscr, true);
        nodelay(stdscr, true);
        prepareColours();
    }
    ~CursesScreen() override {
        endwin();
        guard.reset();
        delscreen(terminal);
    }
    CursesScreen(const CursesScreen&) = delete;
    CursesScreen& operator=(const CursesScreen&) = delete;

    [[nodiscard]] ScreenSize size() const override {
        return {static_cast<std::size_t>(getmaxx(stdscr)), static_cast<std::size_t>(getmaxy(stdscr))};
    }

    [[nodiscard]] bool hasUnicode() const override { return MB_CUR_MAX > 1; }

    void show(const Picture& picture) override {
        if (guard->takeContinuation()) {
            reset_prog_mode();
            clearok(curscr, true);
        }
        erase();
        for (std::size_t row = 0; row < picture.size(); ++row) {
            move(static_cast<int>(row), 0);
            for (const StyledText& part : picture[row]) {
                attrset(static_cast<int>(attributesOf(part.style)));
                addstr(part.text.c_str());
            }
        }
        attrset(A_NORMAL);
        refresh();
    }

    [[nodiscard]] std::optional<MonitorKey> waitForKey(int limitMs) override {
        // In steps: a new size comes as a signal that ends no wait.
        for (int restMs = limitMs; restMs > 0; restMs -= stepMs) {
            const bool isReady = waitUntilReady(STDIN_FILENO, Direction::read, std::min(restMs, stepMs));
            const int code = getch();
            if (code == KEY_RESIZE) {
                return std::nullopt;
            }
            if (code != ERR) {
                return keyOf(code);
            }
            if (isReady) {
                expectTerminal();
            }
            if (guard->wasContinued()) {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

private:
    static constexpr int stepMs = 100;

    /// One that hung up is always ready, and never gives a key.
    void expectTerminal() {
        termios modes{};
        if (tcgetattr(STDIN_FILENO, &modes) != 0) {
            fail("the terminal is gone");
        }
        pauseFor(stepMs);
    }

    SCREEN* const terminal;
    std::optional<TerminalGuard> guard;
};

}  // namespace

std::unique_ptr<Screen> Screen::open() {
    termios modes{};
    if (!isTerminal(stdin) || !isTerminal(stdout) || tcgetattr(STDIN_FILENO, &modes) != 0) {
        return nullptr;
    }
    std::setlocale(LC_CTYPE, "");
    SCREEN* const opened = newterm(nullptr, stdout, stdin);
    if (opened == nullptr) {
        return nullptr;
    }
    if (!canBePainted()) {
        endwin();
        delscreen(opened);
        return nullptr;
    }
    return std::make_unique<CursesScreen>(opened, modes);
}

}  // namespace korva::tool
