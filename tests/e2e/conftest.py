"""Fixtures: `system` runs every test on both systems, `start` starts the program."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

import pytest

from desktop import wait_until
from framefile import Animation
from program import SYSTEMS, Player, Program, be_an_ordinary_parent


def pytest_configure():
    be_an_ordinary_parent()


def pytest_addoption(parser):
    parser.addoption(
        "--system",
        choices=[*SYSTEMS, "all"],
        default="all",
        help="drive the program on this system only",
    )
    parser.addoption(
        "--part",
        help="K/N: every N-th test beginning with the K-th, for several runs side by side, without"
        " those that are marked to run alone; 'alone': these",
    )


def pytest_collection_modifyitems(config, items):
    part = config.getoption("--part")
    if part is None:
        return
    alone = [item for item in items if item.get_closest_marker("alone")]
    if part == "alone":
        items[:] = alone
        return
    which, of = map(int, part.split("/"))
    items[:] = [item for item in items if item not in alone][which - 1 :: of]


def pytest_generate_tests(metafunc):
    if "system" in metafunc.fixturenames:
        chosen = metafunc.config.getoption("--system")
        names = list(SYSTEMS) if chosen == "all" else [chosen]
        metafunc.parametrize("system", names, indirect=True, scope="session")


@pytest.fixture(scope="session")
def system(request):
    made = SYSTEMS[request.param]()
    yield made
    made.close()


@pytest.fixture
def folder(tmp_path):
    """Current directory of the program."""
    path = tmp_path / "work"
    path.mkdir()
    return path


@pytest.fixture
def start(system, folder, tmp_path):
    """start(*arguments, stdin=None, environment=None) runs the program; it is ended with the test.
    The runs of one test share their saved settings, which are a new user's at first."""
    runs = []
    settings = tmp_path / "settings"
    settings.mkdir()
    system.forget_settings(settings)

    def run(*arguments, **options):
        private = tmp_path / f"run{len(runs)}"
        private.mkdir()
        runs.append(Program(system, arguments, folder, private, settings, **options))
        return runs[-1]

    yield run
    system.desktop.release_all()
    for program in runs:
        program.kill()
    system.desktop.park_pointer()
    wait_until(lambda: not system.desktop.windows(), what="the windows of ended programs to go")


@pytest.fixture
def play(start, folder):
    """play(*options, **animation) writes numbered frames and shows them, stopped on the first."""

    def run(*options, **shape):
        animation = Animation(**shape).write(folder)
        player = Player(start(*options, "shot."), animation)
        player.pause()
        player.rewind()
        return player

    return run
