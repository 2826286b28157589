"""The loop: batches to steps, with mixed precision, average, checkpoints and a time budget."""

import time
from collections.abc import Callable, Iterable
from dataclasses import dataclass
from pathlib import Path

import torch
from torch import nn

from . import checkpoint, schedule
from .checkpoint import Progress
from .stopping import Stop


@dataclass(frozen=True)
class Settings:
    """How a training runs; `plan` holds what must not change between its runs."""

    out: Path
    minutes: float  # this run
    total_minutes: float  # all runs: the schedule's length
    rate: float
    plan: dict
    save_seconds: float = 60
    report_seconds: float = 10


class Trainer:
    """Holds a network, its optimiser and its average; goes on where the checkpoint stopped."""

    def __init__(self, network: nn.Module, settings: Settings):
        self.device = torch.device("cuda" if torch.cuda.is_available() else "cpu")
        self.network = network.to(self.device, memory_format=torch.channels_last).train()
        self._half = _half_is_fast(self.device)
        self.settings = settings
        self.optimiser = torch.optim.AdamW(_groups(network), lr=settings.rate, betas=(0.9, 0.98))
        self.average = schedule.Average(self.network)
        self.file = settings.out / "checkpoint.pt"
        self._parts = {"network": network, "optimiser": self.optimiser, "average": self.average}
        self.progress: Progress = checkpoint.load(self.file, self._parts, settings.plan)

    def run(self, batches: Iterable[tuple[tuple, int]], loss: Callable) -> None:
        """Train until the minutes or the schedule are over; `loss(network, batch)` gives a dict.

        The dict's "loss" is what is minimised, the others are reported.
        """
        stop, before = Stop(self.settings.minutes), self.progress.seconds
        start = saved = reported = time.monotonic()
        for batch, fresh in batches:
            terms = self._step(batch, loss)
            now = time.monotonic()
            self.progress.steps += 1
            self.progress.samples += fresh
            self.progress.seconds = before + now - start
            if now - reported > self.settings.report_seconds:
                reported = now
                self._report(terms)
            over = stop.now() or self._done() >= 1
            if over or now - saved > self.settings.save_seconds:
                saved = now
                checkpoint.save(self.file, self.progress, self._parts, self.settings.plan)
            if over:
                self._report(terms)
                break

    def _done(self) -> float:
        return self.progress.seconds / (60 * self.settings.total_minutes)

    def _step(self, batch: tuple, loss: Callable) -> dict[str, torch.Tensor]:
        for group in self.optimiser.param_groups:
            group["lr"] = self.settings.rate * schedule.rate(self._done())
        batch = tuple(part.to(self.device, non_blocking=True) for part in batch)
        with torch.autocast(self.device.type, torch.bfloat16, enabled=self._half):
            terms = loss(self.network, batch)
        self.optimiser.zero_grad(set_to_none=True)
        terms["loss"].backward()
        nn.utils.clip_grad_norm_(self.network.parameters(), 5.0)
        self.optimiser.step()
        self.average.update(self.network)
        return terms

    def _report(self, terms: dict[str, torch.Tensor]) -> None:
        told = " ".join(f"{name} {float(value.detach()):.4f}" for name, value in terms.items())
        done = self.progress
        print(
            f"step {done.steps} fresh {done.samples} {done.seconds / 60:.1f} min {told}", flush=True
        )


def _half_is_fast(device: torch.device) -> bool:
    """Say whether bfloat16 saves time: on GPUs, and on processors with matrix instructions.

    With vector instructions alone it takes 1.4 times as long as float32.
    """
    if device.type == "cuda":
        return True
    return bool(getattr(torch.cpu, "_is_amx_tile_supported", bool)())


def _groups(network: nn.Module) -> list[dict]:
    """Return parameters with weight decay and without: biases and norms go without."""
    plain = [p for p in network.parameters() if p.ndim < 2]
    decayed = [p for p in network.parameters() if p.ndim >= 2]
    return [{"params": decayed, "weight_decay": 0.02}, {"params": plain, "weight_decay": 0.0}]
