"""The settings of both backends: a wrong one is named."""

import pytest
from zelvoran_anpr.mmc import MmcError, create_backend


@pytest.mark.parametrize(
    ("config", "told"),
    [
        ({"backend": "fog"}, "mmc.backend must be cloud or local, not 'fog'"),
        ({"cloud": []}, None),
        ({"cloud": "x"}, "mmc.cloud must be a group of settings"),
        ({"cloud": {"timeout": "soon"}}, "mmc.cloud.timeout must be a number .* not 'soon'"),
        ({"cloud": {"timeout": True}}, "mmc.cloud.timeout must be a number"),
        (
            {"cloud": {"daily_limit": -1}},
            "mmc.cloud.daily_limit must be a whole number of at least 0",
        ),
        ({"cloud": {"url": ["x"]}}, "mmc.cloud.url must be text"),
        (
            {"backend": "local", "local": {"parallel": 0}},
            "mmc.local.parallel must be a whole number",
        ),
        ({"backend": "local", "local": {"threads": float("nan")}}, "mmc.local.threads must be"),
    ],
)
def test_a_wrong_setting_is_named(home, config, told):
    if told is None:
        assert create_backend(config, None).name == "cloud"
        return
    with pytest.raises(MmcError, match=told):
        create_backend(config, None)
