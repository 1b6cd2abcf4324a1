"""Eight requests at the same time, each with its own connection to the data file."""

import threading
from concurrent.futures import ThreadPoolExecutor

import pytest
from conftest import Visitor

from tarnwick.store import Store

VISITORS = 8


@pytest.fixture
def visitors(tmp_path):
    return [Visitor(Store(tmp_path / "service.sqlite")) for _ in range(VISITORS)]


def at_once(visitors, act):
    """Runs the same action for all visitors at the same time; returns the sorted statuses."""
    barrier = threading.Barrier(VISITORS)
    with ThreadPoolExecutor(VISITORS) as pool:
        return sorted(pool.map(lambda visitor: [barrier.wait(), act(visitor).status_code][1], visitors))


@pytest.mark.parametrize("attempt", range(5))
def test_a_code_is_approved_once_and_its_token_given_once(visitors, attempt):
    code = visitors[0].start_link()
    assert at_once(visitors, lambda visitor: visitor.decide(code)) == [303] + [409] * (VISITORS - 1)
    assert at_once(visitors, lambda visitor: visitor.poll(code)) == [200] + [410] * (VISITORS - 1)


def test_the_plans_limit_holds(visitors):
    token = visitors[0].link()
    assert at_once(visitors, lambda visitor: visitor.create(token)) == [201] * 3 + [403] * (VISITORS - 3)
