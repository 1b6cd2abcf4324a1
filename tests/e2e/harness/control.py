"""One control of a window, as a screen reader meets it."""

import warnings

import gi

gi.require_version("Atspi", "2.0")

from gi.repository import Atspi, GLib  # noqa: E402 (the version comes first)

from harness.waiting import NotThere  # noqa: E402

Atspi.set_timeout(5000, 5000)

# Newer versions of the accessibility library call some roles differently.
_FORMER_NAMES = {"button": "push button"}

# The current tab and the current cell always claim the focus, and so does the tabs' box instead of its tab bar.
_FALSE_CLAIMS = ("page tab", "table cell", "filler")


def unless_gone(question, otherwise=None):
    """The answer to a question about an object that its program may just have taken away."""
    try:
        return question()
    except GLib.Error:
        return otherwise


class Control:
    """Wraps an accessible object. Every question goes to the program: remembered answers would be old ones."""

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
        """What its user calls it: the label beside it, or else its own name."""
        labels = self.relation("labelled-by")
        return labels[0].name if labels else self.name

    def states(self):
        """The states' names, such as 'focused' or 'read-only'."""
        self.accessible.clear_cache()
        return {state.value_nick for state in self.accessible.get_state_set().get_states()}

    def enabled(self):
        return "enabled" in self.states()

    def focused(self):
        """Whether the keyboard talks to this control."""
        return self.role not in _FALSE_CLAIMS and "focused" in self.states()

    def children(self):
        self.accessible.clear_cache()
        children = (self.accessible.get_child_at_index(index) for index in range(self.accessible.get_child_count()))
        return [Control(child) for child in children if child is not None]

    def descendants(self):
        """Everything inside, without what lists and tables make up for each visit and soon forget again."""
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
        """The controls that are related to this one, such as by 'labelled-by'."""
        for relation in self.accessible.get_relation_set():
            if relation.get_relation_type().value_nick == kind:
                return [Control(relation.get_target(index)) for index in range(relation.get_n_targets())]
        return []

    def actions(self):
        with warnings.catch_warnings():
            # The library's notes call this one deprecated in favour of itself.
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
        # By its interface: newer versions have another get_text of the object itself.
        return Atspi.Text.get_text(self.accessible, 0, self.accessible.get_character_count())

    def set_text(self, text):
        if not self.accessible.set_text_contents(text):
            raise NotThere(f"{self} does not take a text")

    def choices(self):
        """What a combo box offers."""
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
