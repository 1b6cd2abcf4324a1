"""One control of a window, as a screen reader sees it."""

import warnings

import gi

gi.require_version("Atspi", "2.0")

from gi.repository import Atspi, GLib  # noqa: E402 (the version comes first)

from harness.waiting import NotThere  # noqa: E402

Atspi.set_timeout(5000, 5000)

# Newer versions of the accessibility library have other names for some roles.
_FORMER_NAMES = {"button": "push button"}

# The current tab and cell always report the focus. The box around the tabs reports it instead of the tab bar.
_FALSE_CLAIMS = ("page tab", "table cell", "filler")


def unless_gone(question, otherwise=None):
    """Calls the function; returns `otherwise` if the object that it asks about no longer exists."""
    try:
        return question()
    except GLib.Error:
        return otherwise


class Control:
    """Wraps an accessible object. Asks the program every time, since cached answers may be outdated."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def role(self):
        name = self.accessible.get_role_name()
        return _FORMER_NAMES.get(name, name)

    @property
    def name(self):
        self.accessible.clear_cache()
        return self.accessible.get_name()

    def title(self):
        """What a user calls it: the text of its label, else its own name."""
        labels = self.relation("labelled-by")
        return labels[0].name if labels else self.name

    def states(self):
        """The states' names, such as 'focused' or 'read-only'."""
        self.accessible.clear_cache()
        return {state.value_nick for state in self.accessible.get_state_set().get_states()}

    def enabled(self):
        return "enabled" in self.states()

    def focused(self):
        """Whether this control has the keyboard focus."""
        return self.role not in _FALSE_CLAIMS and "focused" in self.states()

    def children(self):
        self.accessible.clear_cache()
        children = (self.accessible.get_child_at_index(index) for index in range(self.accessible.get_child_count()))
        return [Control(child) for child in children if child is not None]

    def descendants(self):
        """All descendants, except those of lists and tables, which Qt creates on demand and soon deletes."""
        for child in unless_gone(self.children, []):
            role = unless_gone(lambda child=child: child.role)
            if role is not None:
                yield child
                if role not in ("table", "list"):
                    yield from child.descendants()

    def extents(self):
        """Left, top, width and height on the screen."""
        box = self.accessible.get_extents(Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def relation(self, kind):
        """The controls with a relation to this one, such as 'labelled-by'."""
        for relation in self.accessible.get_relation_set():
            if relation.get_relation_type().value_nick == kind:
                return [Control(relation.get_target(index)) for index in range(relation.get_n_targets())]
        return []

    def actions(self):
        with warnings.catch_warnings():
            # The binding wrongly reports this function as deprecated.
            warnings.simplefilter("ignore", DeprecationWarning)
            return [self.accessible.get_action_name(index) for index in range(self.accessible.get_n_actions())]

    def do(self, action):
        """Performs an action that the control offers: Press, Toggle, SetFocus."""
        actions = self.actions()
        if action not in actions:
            raise NotThere(f"{self} offers {actions}, not {action}")
        self.accessible.do_action(actions.index(action))

    def take_focus(self):
        self.do("SetFocus")

    def text(self):
        """The contents of a text field."""
        # Through the interface: in newer versions the object itself has a different get_text.
        return Atspi.Text.get_text(self.accessible, 0, self.accessible.get_character_count())

    def set_text(self, text):
        if not self.accessible.set_text_contents(text):
            raise NotThere(f"{self} does not take a text")

    def choices(self):
        """The items of a combo box."""
        return [item.name for box in self.children() if box.role == "list" for item in box.children()]

    def rows(self):
        """The texts of a table, row by row."""
        return [[cell.name for cell in row] for row in self.cells()]

    def cells(self):
        """The cells of a table, row by row."""
        self.accessible.clear_cache()
        columns = range(self.accessible.get_n_columns())
        return [[self._cell(row, column) for column in columns] for row in range(self.accessible.get_n_rows())]

    def _cell(self, row, column):
        cell = self.accessible.get_accessible_at(row, column)
        if cell is None:
            raise NotThere("the table is just being filled")
        return Control(cell)

    def __repr__(self):
        return unless_gone(lambda: f"{self.role} '{self.name}'", "a control that is gone")
