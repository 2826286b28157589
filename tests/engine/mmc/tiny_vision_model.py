"""Writes a GGUF language model and its vision projector of a few hundred kilobytes.

Architecture and tokenizer of Qwen3-VL, random weights: it loads, sees and speaks, but nonsense.
"""

from pathlib import Path

import gguf
import numpy as np

_EMBED, _FEED, _HEADS, _HEAD, _LAYERS = 64, 128, 2, 32, 2
_PATCH, _IMAGE = 16, 64
_SPECIAL = (
    "<|endoftext|>", "<|im_start|>", "<|im_end|>",
    "<|vision_start|>", "<|vision_end|>", "<|image_pad|>",
)  # fmt: skip
_TEMPLATE = (
    "{% for m in messages %}<|im_start|>{{ m.role }}\n{% if m.content is string %}{{ m.content }}"
    "{% else %}{% for p in m.content %}{{ p.text }}{% endfor %}{% endif %}<|im_end|>\n{% endfor %}"
    "{% if add_generation_prompt %}<|im_start|>assistant\n{% endif %}"
)


class _Random:
    """Named tensors of small random numbers, the same in every run."""

    def __init__(self, writer: gguf.GGUFWriter) -> None:
        self._writer, self._source = writer, np.random.default_rng(3)

    def tensor(self, name: str, *shape: int, offset: float = 0.0, silent: slice = slice(0)) -> None:
        values = self._source.normal(offset, 0.1, shape).astype(np.float32)
        values[silent] = 0
        self._writer.add_tensor(name, values)

    def linear(self, name: str, out: int, inner: int) -> None:
        self.tensor(f"{name}.weight", out, inner)
        self.tensor(f"{name}.bias", out)

    def norm(self, name: str, size: int, bias: bool = True) -> None:
        self.tensor(f"{name}.weight", size, offset=1.0)
        if bias:
            self.tensor(f"{name}.bias", size)


def byte_letters() -> list[str]:
    """The letter that stands for each byte in byte-level vocabularies of the GPT-2 kind."""
    plain = {*range(33, 127), *range(161, 173), *range(174, 256)}
    spare = iter(range(256, 512))
    return [chr(byte) if byte in plain else chr(next(spare)) for byte in range(256)]


def _finish(writer: gguf.GGUFWriter) -> None:
    writer.write_header_to_file()
    writer.write_kv_data_to_file()
    writer.write_tensors_to_file()
    writer.close()


def _write_tokenizer(writer: gguf.GGUFWriter) -> int:
    tokens = [*byte_letters(), "th", *_SPECIAL]
    normal, control = gguf.TokenType.NORMAL, gguf.TokenType.CONTROL
    writer.add_tokenizer_model("gpt2")
    writer.add_tokenizer_pre("qwen2")
    writer.add_token_list(tokens)
    writer.add_token_types([control if token in _SPECIAL else normal for token in tokens])
    writer.add_token_merges(["t h"])
    writer.add_eos_token_id(tokens.index("<|im_end|>"))
    writer.add_pad_token_id(tokens.index("<|endoftext|>"))
    writer.add_chat_template(_TEMPLATE)
    return len(tokens)


def write_language_model(path: Path) -> None:
    writer = gguf.GGUFWriter(path, "qwen3vl")
    writer.add_block_count(_LAYERS)
    writer.add_context_length(8192)
    writer.add_embedding_length(_EMBED)
    writer.add_feed_forward_length(_FEED)
    writer.add_head_count(_HEADS)
    writer.add_head_count_kv(_HEADS)
    writer.add_key_length(_HEAD)
    writer.add_value_length(_HEAD)
    writer.add_layer_norm_rms_eps(1e-6)
    writer.add_rope_freq_base(10000.0)
    writer.add_rope_dimension_sections([6, 5, 5, 0])
    vocabulary = _write_tokenizer(writer)
    weights = _Random(writer)
    weights.tensor("token_embd.weight", vocabulary, _EMBED)
    # Bytes above ASCII stay silent: at random they would not add up to UTF-8.
    weights.tensor("output.weight", vocabulary, _EMBED, silent=slice(128, 256))
    weights.norm("output_norm", _EMBED, bias=False)
    for layer in range(_LAYERS):
        name = f"blk.{layer}"
        for norm, size in (("attn", _EMBED), ("ffn", _EMBED), ("attn_q", _HEAD), ("attn_k", _HEAD)):
            weights.norm(f"{name}.{norm}_norm", size, bias=False)
        for part in "qkv":
            weights.tensor(f"{name}.attn_{part}.weight", _HEADS * _HEAD, _EMBED)
        weights.tensor(f"{name}.attn_output.weight", _EMBED, _HEADS * _HEAD)
        weights.tensor(f"{name}.ffn_gate.weight", _FEED, _EMBED)
        weights.tensor(f"{name}.ffn_up.weight", _FEED, _EMBED)
        weights.tensor(f"{name}.ffn_down.weight", _EMBED, _FEED)
    _finish(writer)


def write_projector(path: Path) -> None:
    writer = gguf.GGUFWriter(path, "clip")
    writer.add_bool("clip.has_vision_encoder", True)
    writer.add_bool("clip.use_gelu", True)
    writer.add_string("clip.projector_type", "qwen3vl_merger")
    for key, value in {
        "embedding_length": _EMBED, "feed_forward_length": _FEED, "block_count": _LAYERS,
        "projection_dim": _EMBED, "attention.head_count": _HEADS, "image_size": _IMAGE,
        "patch_size": _PATCH, "spatial_merge_size": 2,
    }.items():  # fmt: skip
        writer.add_uint32(f"clip.vision.{key}", value)
    writer.add_float32("clip.vision.attention.layer_norm_epsilon", 1e-6)
    writer.add_array("clip.vision.image_mean", [0.5, 0.5, 0.5])
    writer.add_array("clip.vision.image_std", [0.5, 0.5, 0.5])
    weights = _Random(writer)
    for name in ("v.patch_embd.weight", "v.patch_embd.weight.1"):
        weights.tensor(name, _EMBED, 3, _PATCH, _PATCH)
    weights.tensor("v.patch_embd.bias", _EMBED)
    weights.tensor("v.position_embd.weight", (_IMAGE // _PATCH) ** 2, _EMBED)
    for layer in range(_LAYERS):
        name = f"v.blk.{layer}"
        weights.norm(f"{name}.ln1", _EMBED)
        weights.norm(f"{name}.ln2", _EMBED)
        weights.linear(f"{name}.attn_qkv", 3 * _EMBED, _EMBED)
        weights.linear(f"{name}.attn_out", _EMBED, _EMBED)
        weights.linear(f"{name}.ffn_up", _FEED, _EMBED)
        weights.linear(f"{name}.ffn_down", _EMBED, _FEED)
    weights.norm("v.post_ln", _EMBED)
    weights.linear("mm.0", 4 * _EMBED, 4 * _EMBED)
    weights.linear("mm.2", _EMBED, 4 * _EMBED)
    _finish(writer)
