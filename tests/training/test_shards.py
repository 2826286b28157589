"""Samples on disk: what is written is read, and rendering goes on where it stopped."""

import io
from random import Random

import numpy as np
import pytest
from PIL import Image

from training import alphabet, shards
from training.scene.crop import HEIGHT, WIDTH, any_face, sample, shown


def test_a_plate_number_always_gives_the_same_samples(fonts):
    first, again = (shards.render(7, fonts, seed=1) for _ in range(2))
    assert first == again
    assert shards.render(8, fonts, seed=1) != first != shards.render(7, fonts, seed=2)


def test_a_plate_is_photographed_several_times_anew(fonts):
    shots = shards.render(5, fonts, 1, {"eup": 1})
    assert len(shots) == shards.SHOTS == len({jpeg for jpeg, _, _ in shots})


def test_a_shard_gives_back_its_samples(fonts, tmp_path):
    samples = shards.render(0, fonts, seed=1) + shards.render(1, fonts, seed=1)
    shards.write(tmp_path / "shard-0.npz", samples)
    found = shards.read(tmp_path / "shard-0.npz")
    assert len(found) == len(samples)
    for (jpeg, classes, region), (stored, read_classes, read_region) in zip(
        samples, found, strict=True
    ):
        assert stored == jpeg and shards.unpacked(stored).shape == (HEIGHT, WIDTH, 3)
        assert classes == list(read_classes) and region == read_region
    assert [path.name for path in tmp_path.iterdir()] == ["shard-0.npz"]


def test_the_stored_picture_is_the_rendered_one(fonts):
    jpeg, classes, _ = shards.render(3, fonts, seed=1)[0]
    rng = Random("1:3")
    picture, text, _ = shown(any_face(fonts, rng), fonts, rng)
    stored = np.asarray(Image.open(io.BytesIO(jpeg))).astype(int)
    assert alphabet.decode(classes) == text
    assert np.abs(stored - picture).mean() < 6


def test_some_samples_are_no_plates(fonts):
    texts = [sample(fonts, Random(seed))[1] for seed in range(120)]
    assert 0 < texts.count("") < 20


def test_batches_mix_shards_and_a_round_shows_each_sample_once(fonts, tmp_path, monkeypatch):
    pytest.importorskip("torch")
    monkeypatch.setattr(shards, "SHARD", 6)
    for shard in range(3):
        picture = shards.render(shard, fonts, seed=1)[0][0]
        rows = [(picture, [shard] * 14, 6 * shard + i) for i in range(6)]
        shards.write(tmp_path / f"shard-{shard}.npz", rows)
    endless = shards.stored_batches(tmp_path, 3, seed=1, first=0)
    rounds = [[next(endless) for _ in range(6)] for _ in range(2)]
    seen = [[int(region) for batch in batches for region in batch[2]] for batches in rounds]
    assert sorted(seen[0]) == sorted(seen[1]) == list(range(18)) and seen[0] != seen[1]
    assert any(len(set(batch[1][:, 0].tolist())) > 1 for batch in rounds[0])


def test_a_folder_without_shards_is_named(tmp_path):
    pytest.importorskip("torch")
    with pytest.raises(FileNotFoundError, match="training.shards"):
        next(shards.stored_batches(tmp_path, 4, seed=1, first=0))


def test_a_mixture_draws_what_it_names(fonts):
    mix = shards.mixture("na=1,kr=3,cn=0")
    regions = [shards.render(plate, fonts, 1, mix)[0][2] for plate in range(24)]
    na, kr = (regions.count(alphabet.GROUPS.index(group)) for group in ("na", "kr"))
    assert kr > na > 0 and {*regions} <= {-1, *map(alphabet.GROUPS.index, ("na", "kr"))}


@pytest.mark.parametrize("text", ["xx=1", "na=-1,kr=2", "na=0", "na=much", ""])
def test_a_wrong_mixture_is_refused(text):
    with pytest.raises(ValueError):
        shards.mixture(text)
