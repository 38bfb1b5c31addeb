#include "orv/bridge/state_view.h"

#include <algorithm>
#include <cstdio>

#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv::bridge {

namespace {

constexpr double SecondsBetweenDrawings = 0.25;
constexpr double SecondsBetweenNotes = 1;

using Cells = std::vector<std::string>;

const Cells Head{"device", "place", "client", "link", "sent", "received", "lost", "losses", ""};

std::string NotesOf(const StateRow& row) {
    return row.status.reason + (row.status.reason.empty() || row.note.empty() ? "" : "; ") +
           row.note;
}

Cells CellsOf(const StateRow& row) {
    return {row.device,
            row.place,
            row.client.empty() ? "-" : row.client,
            StateText(row.status.state),
            std::to_string(row.status.sent),
            std::to_string(row.status.received),
            std::to_string(row.status.Lost()),
            std::to_string(row.status.losses),
            NotesOf(row)};
}

std::vector<std::string> TableOf(const std::vector<StateRow>& rows) {
    std::vector<Cells> table{Head};
    std::transform(rows.begin(), rows.end(), std::back_inserter(table), CellsOf);
    std::vector<std::string> lines(table.size());
    for (std::size_t column = 0; column < Head.size(); ++column) {
        std::size_t width = 0;
        for (Cells& cells : table) {
            cells[column] = Printable(cells[column]);
            width = std::max(width, ColumnsOf(cells[column]));
        }
        for (std::size_t i = 0; i < table.size(); ++i) {
            const bool isLast = column + 1 == Head.size();
            lines[i] += isLast ? table[i][column] : Fitted(table[i][column], width) + "  ";
        }
    }
    return lines;
}

std::string LineOf(const StateRow& row) {
    const std::string notes = NotesOf(row);
    return Printable(row.device + " at " + row.place + ": " + StateText(row.status.state) +
                     (row.client.empty() ? "" : ", used by " + row.client) +
                     (notes.empty() ? "" : "; " + notes));
}

}  // namespace

const char* StateText(LinkState state) {
    constexpr const char* Texts[] = {"closed", "connecting", "open", "closing", "waiting"};
    return Texts[static_cast<std::size_t>(state)];
}

StateView::StateView() {
    if (terminal::IsOutput()) {
        live.emplace();
    }
}

void StateView::Show(const std::vector<StateRow>& rows) {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    if (live && passed.count() >= nextDrawing) {
        nextDrawing = passed.count() + SecondsBetweenDrawings;
        Draw(rows);
    }
    shown.resize(live ? 0 : rows.size());
    for (std::size_t i = 0; i < shown.size(); ++i) {
        Shown& row = shown[i];
        const std::string line = LineOf(rows[i]);
        const bool isNew = rows[i].client != row.client || rows[i].status.state != row.state;
        if (line != row.line && (isNew || passed.count() >= row.at + SecondsBetweenNotes)) {
            char stamp[32];
            snprintf(stamp, sizeof stamp, "%7.1f s  ", passed.count());
            terminal::Write(stamp + line + '\n');
            row = {line, rows[i].client, rows[i].status.state, passed.count()};
        }
    }
}

void StateView::Draw(const std::vector<StateRow>& rows) {
    const terminal::Size size = terminal::SizeOf();
    std::vector<std::string> lines = TableOf(rows);
    // Leaves one row for the line below the table and one for the cursor.
    lines.resize(std::min(lines.size(), size.rows > 3 ? size.rows - 2 : 1));
    lines.emplace_back("Ctrl-C ends the bridge");
    for (std::string& line : lines) {
        line = ColumnsOf(line) > size.columns ? Fitted(line, size.columns) : line;
    }
    live->Draw(lines);
}

void StateView::End(const std::vector<StateRow>& rows) {
    if (live) {
        live->Clear();
        live.reset();
    }
    std::string text;
    for (const std::string& line : TableOf(rows)) {
        text += line + '\n';
    }
    terminal::Write(text);
}

}  // namespace orv::bridge
