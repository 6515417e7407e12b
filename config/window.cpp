// The settings window: one control per setting, and Save, Cancel and Play.

#include "window.h"

#include <gtk/gtk.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "settingsfile.h"

namespace {

using bvset::Kind;

struct App {
    std::string file, game, gameDir;
    GtkWidget* window = nullptr;
    GtkWidget* status = nullptr;
    std::array<GtkWidget*, bvset::kCount> widgets{};
};

// Settings whose value only matters while another one is switched on.
struct Dependent {
    int setting, on;
};
const Dependent kDependents[] = {{7, 6}, {9, 8}, {12, 11}, {16, 13}};

int valueOf(App& app, int i) {
    const bvset::Setting& s = bvset::settings()[i];
    GtkWidget* w = app.widgets[i];
    switch (s.kind) {
    case Kind::Choice: return s.min + gtk_combo_box_get_active(GTK_COMBO_BOX(w));
    case Kind::Switch: return gtk_switch_get_active(GTK_SWITCH(w)) ? 1 : 0;
    case Kind::Range:
        if (GTK_IS_SPIN_BUTTON(w)) return gtk_spin_button_get_value_as_int(GTK_SPIN_BUTTON(w));
        return (int)(gtk_range_get_value(GTK_RANGE(w)) + 0.5);
    }
    return 0;
}

void updateDependents(App& app) {
    for (const Dependent& d : kDependents)
        gtk_widget_set_sensitive(app.widgets[d.setting], valueOf(app, d.on) != 0);
}

void onSwitch(GObject*, GParamSpec*, gpointer data) {
    updateDependents(*static_cast<App*>(data));
}

void setStatus(App& app, const std::string& text, bool error) {
    gtk_label_set_text(GTK_LABEL(app.status), text.c_str());
    GtkStyleContext* style = gtk_widget_get_style_context(app.status);
    if (error) gtk_style_context_add_class(style, "error");
    else gtk_style_context_remove_class(style, "error");
    gtk_widget_set_visible(app.status, !text.empty());
}

bool save(App& app) {
    bvset::Values values{};
    for (int i = 0; i < bvset::kCount; i++) values[i] = valueOf(app, i);
    std::string error;
    if (!bvset::write(app.file, values, &error)) {
        setStatus(app, "Could not save: " + error, true);
        return false;
    }
    return true;
}

void onSave(GtkButton*, gpointer data) {
    App& app = *static_cast<App*>(data);
    if (save(app)) gtk_widget_destroy(app.window);
}

void onCancel(GtkButton*, gpointer data) {
    gtk_widget_destroy(static_cast<App*>(data)->window);
}

void onPlay(GtkButton*, gpointer data) {
    App& app = *static_cast<App*>(data);
    if (!save(app)) return;
    gchar* argv[] = {const_cast<gchar*>(app.game.c_str()), nullptr};
    GError* error = nullptr;
    // The game reads Data/ below its working directory, so it starts where the
    // settings file lives, not wherever this program was started.
    if (!g_spawn_async(app.gameDir.c_str(), argv, nullptr, G_SPAWN_DEFAULT, nullptr, nullptr, nullptr, &error)) {
        setStatus(app, std::string("The settings are saved, but the game could not be started: ") + error->message,
                  true);
        g_error_free(error);
        return;
    }
    gtk_widget_destroy(app.window);
}

gboolean onKey(GtkWidget*, GdkEventKey* event, gpointer data) {
    if (event->keyval == GDK_KEY_Escape) {
        onCancel(nullptr, data);
        return TRUE;
    }
    return FALSE;
}

GtkWidget* makeWidget(int i, int value) {
    const bvset::Setting& s = bvset::settings()[i];
    GtkWidget* w = nullptr;
    switch (s.kind) {
    case Kind::Choice:
        w = gtk_combo_box_text_new();
        for (int k = 0; k < bvset::nsteps(s); k++) gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(w), s.steps[k]);
        gtk_combo_box_set_active(GTK_COMBO_BOX(w), value - s.min);
        gtk_widget_set_halign(w, GTK_ALIGN_START);
        break;
    case Kind::Switch:
        w = gtk_switch_new();
        gtk_switch_set_active(GTK_SWITCH(w), value != 0);
        gtk_widget_set_halign(w, GTK_ALIGN_START);
        break;
    case Kind::Range:
        if (s.max - s.min <= 20) {
            w = gtk_spin_button_new_with_range(s.min, s.max, 1);
            gtk_spin_button_set_value(GTK_SPIN_BUTTON(w), value);
            gtk_widget_set_halign(w, GTK_ALIGN_START);
        } else {
            w = gtk_scale_new_with_range(GTK_ORIENTATION_HORIZONTAL, s.min, s.max, 1);
            gtk_scale_set_digits(GTK_SCALE(w), 0);
            gtk_scale_set_value_pos(GTK_SCALE(w), GTK_POS_RIGHT);
            gtk_range_set_value(GTK_RANGE(w), value);
            gtk_range_set_increments(GTK_RANGE(w), 1, 10);
            gtk_widget_set_size_request(w, 220, -1);
            gtk_widget_set_hexpand(w, TRUE);
        }
        break;
    }
    gtk_widget_set_valign(w, GTK_ALIGN_CENTER);
    return w;
}

// Titles with an underlined letter: Alt and that letter moves to the setting.
const char* kMnemonics[bvset::kCount] = {
    "Screen _resolution", "Colour _depth",        "_View distance", "Detai_l level",
    "_Kart shadows",      "_Track shadows",       "Sound _effects", "Sound effects vol_ume",
    "_Music",             "Music v_olume",        "_Brightness",    "Mouse steerin_g",
    "Mouse se_nsitivity", "_Joystick steering",   "Lens _flare",    "Sk_id marks",
    "Joystick dead _zone",
};

struct Section {
    const char* title;
    std::vector<int> settings;
};

// The window, its keys, and the status line at its top; returns the box the
// rest goes into.
GtkWidget* makeWindow(App& app) {
    app.window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(app.window), "Brontevalle configuration");
    gtk_window_set_icon_name(GTK_WINDOW(app.window), "brontevalle");
    gtk_window_set_resizable(GTK_WINDOW(app.window), FALSE);
    g_signal_connect(app.window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);
    g_signal_connect(app.window, "key-press-event", G_CALLBACK(onKey), &app);

    GtkWidget* outer = gtk_box_new(GTK_ORIENTATION_VERTICAL, 10);
    gtk_container_set_border_width(GTK_CONTAINER(outer), 14);
    gtk_container_add(GTK_CONTAINER(app.window), outer);

    app.status = gtk_label_new("");
    gtk_label_set_line_wrap(GTK_LABEL(app.status), TRUE);
    gtk_label_set_max_width_chars(GTK_LABEL(app.status), 70);
    gtk_label_set_xalign(GTK_LABEL(app.status), 0);
    gtk_box_pack_start(GTK_BOX(outer), app.status, FALSE, FALSE, 0);
    return outer;
}

// One setting's row: its title, its widget and, below them, its hint.
void addSetting(App& app, GtkWidget* grid, int* row, int i, int value) {
    const bvset::Setting& s = bvset::settings()[i];
    GtkWidget* label = gtk_label_new_with_mnemonic(kMnemonics[i]);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_widget_set_margin_start(label, 12);
    GtkWidget* w = makeWidget(i, value);
    gtk_label_set_mnemonic_widget(GTK_LABEL(label), w);
    app.widgets[i] = w;
    gtk_grid_attach(GTK_GRID(grid), label, 0, *row, 1, 1);
    gtk_grid_attach(GTK_GRID(grid), w, 1, (*row)++, 1, 1);
    if (s.kind == Kind::Switch) g_signal_connect(w, "notify::active", G_CALLBACK(onSwitch), &app);
    if (s.hint) {
        GtkWidget* hint = gtk_label_new(s.hint);
        gtk_label_set_line_wrap(GTK_LABEL(hint), TRUE);
        gtk_label_set_max_width_chars(GTK_LABEL(hint), 36);
        gtk_label_set_xalign(GTK_LABEL(hint), 0);
        gtk_widget_set_margin_start(hint, 12);
        gtk_style_context_add_class(gtk_widget_get_style_context(hint), "dim-label");
        gtk_grid_attach(GTK_GRID(grid), hint, 0, (*row)++, 2, 1);
    }
}

// The settings in two columns of headed sections.
void addSettings(App& app, GtkWidget* outer, const bvset::ReadResult& read) {
    GtkWidget* columns = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 24);
    gtk_box_pack_start(GTK_BOX(outer), columns, TRUE, TRUE, 0);
    const std::vector<std::vector<Section>> layout = {
        {{"Screen", {0, 1, 10}}, {"Detail", {2, 3, 4, 5, 14, 15}}},
        {{"Sound", {6, 7, 8, 9}}, {"Steering", {11, 12, 13, 16}}},
    };
    for (const std::vector<Section>& column : layout) {
        GtkWidget* grid = gtk_grid_new();
        gtk_grid_set_row_spacing(GTK_GRID(grid), 6);
        gtk_grid_set_column_spacing(GTK_GRID(grid), 12);
        gtk_widget_set_valign(grid, GTK_ALIGN_START);
        gtk_box_pack_start(GTK_BOX(columns), grid, TRUE, TRUE, 0);
        int row = 0;
        for (const Section& section : column) {
            GtkWidget* heading = gtk_label_new(nullptr);
            std::string markup = std::string("<b>") + section.title + "</b>";
            gtk_label_set_markup(GTK_LABEL(heading), markup.c_str());
            gtk_label_set_xalign(GTK_LABEL(heading), 0);
            if (row > 0) gtk_widget_set_margin_top(heading, 12);
            gtk_grid_attach(GTK_GRID(grid), heading, 0, row++, 2, 1);
            for (int i : section.settings) addSetting(app, grid, &row, i, bvset::normalised(i, read.values[i]));
        }
    }
}

// Which file is edited, dimmed, under the settings.
void addFileLine(App& app, GtkWidget* outer) {
    GtkWidget* where = gtk_label_new(nullptr);
    std::string text = "Settings file: " + app.file;
    gtk_label_set_text(GTK_LABEL(where), text.c_str());
    gtk_label_set_xalign(GTK_LABEL(where), 0);
    gtk_label_set_ellipsize(GTK_LABEL(where), PANGO_ELLIPSIZE_START);
    gtk_style_context_add_class(gtk_widget_get_style_context(where), "dim-label");
    gtk_box_pack_start(GTK_BOX(outer), where, FALSE, FALSE, 0);
}

void addButtons(App& app, GtkWidget* outer) {
    GtkWidget* buttons = gtk_button_box_new(GTK_ORIENTATION_HORIZONTAL);
    gtk_button_box_set_layout(GTK_BUTTON_BOX(buttons), GTK_BUTTONBOX_END);
    gtk_box_set_spacing(GTK_BOX(buttons), 8);
    GtkWidget* cancel = gtk_button_new_with_mnemonic("_Cancel");
    GtkWidget* saveButton = gtk_button_new_with_mnemonic("_Save");
    GtkWidget* play = gtk_button_new_with_mnemonic("_Play");
    gtk_widget_set_tooltip_text(cancel, "Close without changing the settings file");
    gtk_widget_set_tooltip_text(saveButton, "Write the settings and close");
    gtk_widget_set_tooltip_text(play, "Write the settings and start the game");
    gtk_style_context_add_class(gtk_widget_get_style_context(play), "suggested-action");
    gtk_container_add(GTK_CONTAINER(buttons), cancel);
    gtk_container_add(GTK_CONTAINER(buttons), saveButton);
    gtk_container_add(GTK_CONTAINER(buttons), play);
    gtk_box_pack_start(GTK_BOX(outer), buttons, FALSE, FALSE, 0);
    g_signal_connect(cancel, "clicked", G_CALLBACK(onCancel), &app);
    g_signal_connect(saveButton, "clicked", G_CALLBACK(onSave), &app);
    g_signal_connect(play, "clicked", G_CALLBACK(onPlay), &app);
}

// What the status line says about the file as it was read.
void noteHowTheFileRead(App& app, const bvset::ReadResult& read) {
    if (!read.ok) {
        fprintf(stderr, "brontevalle-config: cannot read %s; the shipped settings are offered\n", read.error.c_str());
        setStatus(app, "Could not read the settings file (" + read.error +
                           "). The shipped settings are shown; Save writes them.", true);
        return;
    }
    std::string note;
    if (read.entries < bvset::kRequired)
        note = "The settings file holds only " + std::to_string(read.entries) + " of the " +
               std::to_string(bvset::kRequired) + " settings; the rest are shown as the game reads them.";
    std::string odd;
    for (int i = 0; i < bvset::kCount; i++)
        if (!bvset::inRange(i, read.values[i])) odd += std::string(odd.empty() ? "" : ", ") + bvset::settings()[i].name;
    if (!odd.empty())
        note += std::string(note.empty() ? "" : " ") + "Values outside the usual range (" + odd +
                ") are shown as the game uses them.";
    setStatus(app, note, false);
}

void activate(App& app, const bvset::ReadResult& read) {
    GtkWidget* outer = makeWindow(app);
    addSettings(app, outer, read);
    addFileLine(app, outer);
    addButtons(app, outer);
    gtk_widget_show_all(app.window);
    updateDependents(app);
    noteHowTheFileRead(app, read);
    gtk_widget_grab_focus(app.widgets[0]);
}

}  // namespace

int runWindow(const std::string& file, const std::string& game, const std::string& gameDir) {
    App app;
    app.file = file;
    app.game = game;
    app.gameDir = gameDir;
    activate(app, bvset::read(file));
    gtk_main();
    return 0;
}
