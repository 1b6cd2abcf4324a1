"""The project as a repository to clone: the last commit, with the uncommitted changes."""

import os
import shutil
import subprocess

from .roots import PERSON, REPOSITORY

# In the environment, where the process that git clone starts finds it, too.
_SETTINGS = {"safe.directory": "*", "user.name": "Test", "user.email": "test@localhost"}
_ENVIRONMENT = dict(os.environ, GIT_CONFIG_COUNT=str(len(_SETTINGS)))
for _number, (_key, _value) in enumerate(_SETTINGS.items()):
    _ENVIRONMENT |= {f"GIT_CONFIG_KEY_{_number}": _key, f"GIT_CONFIG_VALUE_{_number}": _value}


def _git(folder, *words):
    command = ["git", "-C", folder, *words]
    return subprocess.run(command, env=_ENVIRONMENT, capture_output=True, text=True, check=True).stdout


def snapshot(folder):
    """Makes a new repository in the folder. Its last commit has the working tree as it is now."""
    shutil.rmtree(folder, ignore_errors=True)
    if (REPOSITORY / ".git").exists():
        _git(REPOSITORY, "clone", "--quiet", "--no-hardlinks", REPOSITORY, folder)
        names = _git(REPOSITORY, "ls-files", "-z", "--cached", "--others", "--exclude-standard").split("\0")
        for name in filter(None, names):
            (folder / name).unlink(missing_ok=True)
            if (REPOSITORY / name).is_file():
                (folder / name).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(REPOSITORY / name, folder / name)
    else:
        shutil.copytree(REPOSITORY, folder, ignore=shutil.ignore_patterns("build", "__pycache__"))
        _git(folder, "init", "--quiet")
    _git(folder, "add", "--all")
    _git(folder, "commit", "--quiet", "--allow-empty", "--message=As it is here")
    return folder


def clone_into(machine, name="tarnwick"):
    """Clones the project as the machine's user. Returns the clone's path in the machine."""
    snapshot(machine.path("/srv/project"))
    machine.run("chown", "--recursive", f"{PERSON}:", "/srv/project")
    machine.run_as_person("git", "clone", "--quiet", "/srv/project", name)
    return f"/home/{PERSON}/{name}"
