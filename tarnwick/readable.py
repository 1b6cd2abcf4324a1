"""Times as people read them."""

import datetime


def duration(milliseconds):
    minutes, seconds = divmod(-(-milliseconds // 1000), 60)
    parts = [counted(minutes, "minute")] if minutes else []
    if seconds or not minutes:
        parts.append(counted(seconds, "second"))
    return " ".join(parts)


def counted(number, unit):
    return f"{number} {unit}" if number == 1 else f"{number} {unit}s"


def moment(milliseconds):
    time = datetime.datetime.fromtimestamp(milliseconds // 1000, datetime.timezone.utc)
    return f"{time.day} {time:%B %Y, %H:%M} UTC"
