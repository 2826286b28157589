"""Reads a photo through the client that try_client.sh has generated."""

import sys
from pathlib import Path

from anpr_client import Client
from anpr_client.api.management import health
from anpr_client.api.recognition import read_plates
from anpr_client.models import BodyReadPlates, Recognition
from anpr_client.types import File


def main(url: str, photo: Path) -> int:
    client = Client(base_url=url, timeout=60)
    print("server", health.sync(client=client).version)
    with photo.open("rb") as stream:
        body = BodyReadPlates(image=File(stream, photo.name, "image/jpeg"))
        answer = read_plates.sync(client=client, body=body)
    if not isinstance(answer, Recognition):
        print(answer)
        return 1
    for plate in answer.results:
        print(plate.plate_text, plate.confidence, plate.bbox)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], Path(sys.argv[2])))
