"""The training loop: it stops, goes on, and repeats itself; needs torch."""

from pathlib import Path
from random import Random

import pytest

torch = pytest.importorskip("torch")

from training.loop import checkpoint, mix, schedule, weights  # noqa: E402
from training.loop.replay import replayed  # noqa: E402
from training.loop.samples import loader  # noqa: E402
from training.loop.trainer import Settings, Trainer  # noqa: E402


def _drawn(rng: Random) -> torch.Tensor:
    return torch.tensor(rng.random(), dtype=torch.float64)


def _first(batches, count: int) -> list[float]:
    return [float(x) for _, batch in zip(range(count), batches, strict=False) for x in batch]


def test_samples_go_on_at_their_number_with_any_number_of_workers():
    alone = _first(loader(_drawn, 1, 0, 3, 0), 6)
    shared = _first(loader(_drawn, 1, 0, 3, 2), 6)
    later = _first(loader(_drawn, 1, 9, 3, 2), 3)
    assert alone == shared and len(set(alone)) == 18
    assert later == alone[9:]


def test_replayed_batches_hold_earlier_samples():
    fresh = [(torch.arange(4) + 4 * i,) for i in range(3)]
    found = list(replayed(fresh, times=3, pool=8))
    assert [count for _, count in found] == [4, 0, 0] * 3
    assert set(found[1][0][0].tolist()) <= {0, 1, 2, 3}
    assert set(found[-1][0][0].tolist()) <= set(range(4, 12))


def test_the_rate_rises_and_falls():
    rates = [schedule.rate(done / 100) for done in range(101)]
    assert max(rates) == pytest.approx(1, abs=0.01)
    assert rates[0] < 0.05 and rates[-1] == pytest.approx(0.01)
    assert rates[10:] == sorted(rates[10:], reverse=True)


def _trainer(folder: Path, seed: int = 1) -> Trainer:
    torch.manual_seed(seed)
    settings = Settings(folder, minutes=1, total_minutes=10, rate=2.0, plan={"seed": seed})
    return Trainer(torch.nn.Conv2d(1, 1, 1), settings)


def _batches(first: int, count: int):
    for number in range(first, first + count):
        yield (torch.full((2, 1, 1, 1), float(number % 3)),), 2


def _to_one(network, batch) -> dict:
    return {"loss": (network(batch[0]) - 1).square().mean()}


def test_training_lowers_the_loss_and_goes_on_from_its_checkpoint(tmp_path):
    trainer = _trainer(tmp_path)
    before = float(_to_one(trainer.network, (torch.ones(1, 1, 1, 1),))["loss"])
    trainer.run(_batches(0, 40), _to_one)
    checkpoint.save(trainer.file, trainer.progress, trainer._parts, trainer.settings.plan)
    again = _trainer(tmp_path)
    assert (again.progress.steps, again.progress.samples) == (40, 80)
    assert again.progress.seconds > 0
    after = float(_to_one(again.network, (torch.ones(1, 1, 1, 1),))["loss"])
    assert after < before / 4


def test_a_run_ends_with_its_schedule_and_keeps_its_state(tmp_path):
    trainer = _trainer(tmp_path)
    trainer.progress.seconds = 600
    trainer.run(_batches(0, 1000), _to_one)
    assert trainer.progress.steps == 1
    assert _trainer(tmp_path).progress.steps == 1


def test_a_checkpoint_of_another_plan_is_refused(tmp_path):
    trainer = _trainer(tmp_path)
    checkpoint.save(trainer.file, trainer.progress, trainer._parts, trainer.settings.plan)
    with pytest.raises(ValueError, match="same settings"):
        _trainer(tmp_path, seed=2)


def test_a_checkpoint_is_written_whole_or_not_at_all(tmp_path, monkeypatch):
    trainer = _trainer(tmp_path)
    checkpoint.save(trainer.file, trainer.progress, trainer._parts, {"seed": 1})
    whole = trainer.file.read_bytes()

    def fail(*_):
        raise OSError("disk full")

    monkeypatch.setattr(torch, "save", fail)
    with pytest.raises(OSError):
        checkpoint.save(trainer.file, trainer.progress, trainer._parts, {"seed": 1})
    assert trainer.file.read_bytes() == whole


def test_kept_weights_begin_a_new_training_where_the_old_one_ended(tmp_path):
    trainer = _trainer(tmp_path)
    trainer.run(_batches(0, 40), _to_one)
    checkpoint.save(trainer.file, trainer.progress, trainer._parts, trainer.settings.plan)
    weights.keep(trainer.file, tmp_path / "kept" / "one.pt")
    for source in (trainer.file, tmp_path / "kept" / "one.pt"):
        fresh = torch.nn.Conv2d(1, 1, 1)
        weights.begin(fresh, source)
        learnt = trainer.average.network.weight
        assert float(fresh.weight.detach()) == pytest.approx(float(learnt), rel=1e-3)
    with pytest.raises(RuntimeError):
        weights.begin(torch.nn.Conv2d(1, 2, 1), trainer.file)


def test_a_mix_lies_between_the_weights_of_both_ends(tmp_path):
    ends = []
    for name, value in (("begin", 0.0), ("run", 1.0)):
        state = {"parts": {"average": {"network": {"a": torch.full((2,), value)}}}}
        (tmp_path / name).mkdir()
        ends.append(tmp_path / name / "checkpoint.pt")
        torch.save(state, ends[-1])
    mix.mix(tmp_path / "run", ends[0], 0.6, tmp_path / "mixed")
    mixed = torch.load(tmp_path / "mixed" / "checkpoint.pt", weights_only=False)
    assert torch.allclose(mixed["parts"]["average"]["network"]["a"], torch.full((2,), 0.6))


def test_weights_of_another_network_are_not_mixed(tmp_path):
    for name, size in (("begin", 3), ("run", 2)):
        (tmp_path / name).mkdir()
        state = {"parts": {"average": {"network": {"a": torch.zeros(size)}}}}
        torch.save(state, tmp_path / name / "checkpoint.pt")
    with pytest.raises(ValueError, match="not of one network"):
        mix.mix(tmp_path / "run", tmp_path / "begin" / "checkpoint.pt", 0.6, tmp_path / "mixed")
