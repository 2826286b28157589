"""The reader's classes: one alphabet for all plates of the world, and the region groups.

The order is part of a trained model: append, never insert.
"""

LATIN = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
CN_PROVINCES = "京津沪渝冀豫云辽黑湘皖鲁新苏浙赣鄂桂甘晋蒙陕吉闽贵粤青藏川宁琼"
CN_SPECIAL = "使领警学港澳挂"
KR_PRIVATE = (
    "가나다라마거너더러머버서어저고노도로모보소오조구누두루무부수우주바사아자하허호배국합육해공"
)
KR_PLACES = (
    "서울", "부산", "대구", "인천", "광주", "대전", "울산", "세종", "경기", "강원", "충북", "충남",
    "전북", "전남", "경북", "경남", "제주",
)  # fmt: skip
JP_KANA = "あいうえかきくけこさすせそたちつてとなにぬねのはひふほまみむめもやゆよらりるれろわを"
JP_PLACES = (
    "札幌", "函館", "旭川", "室蘭", "釧路", "帯広", "北見", "知床", "苫小牧", "青森", "弘前",
    "八戸", "岩手", "盛岡", "平泉", "宮城", "仙台", "秋田", "山形", "庄内", "福島", "会津",
    "郡山", "白河", "いわき", "水戸", "土浦", "つくば", "宇都宮", "那須", "とちぎ", "日光",
    "群馬", "前橋", "高崎", "大宮", "川口", "所沢", "川越", "熊谷", "春日部", "越谷", "千葉",
    "成田", "習志野", "市川", "船橋", "袖ヶ浦", "市原", "野田", "柏", "松戸", "品川", "世田谷",
    "練馬", "杉並", "板橋", "足立", "江東", "葛飾", "八王子", "多摩", "横浜", "川崎", "湘南",
    "相模", "山梨", "富士山", "新潟", "長岡", "上越", "長野", "松本", "諏訪", "富山", "石川",
    "金沢", "福井", "岐阜", "飛騨", "静岡", "浜松", "沼津", "伊豆", "豊橋", "三河", "岡崎",
    "豊田", "名古屋", "尾張小牧", "一宮", "春日井", "三重", "鈴鹿", "四日市", "伊勢志摩", "滋賀",
    "京都", "大阪", "なにわ", "和泉", "堺", "奈良", "飛鳥", "和歌山", "神戸", "姫路", "鳥取",
    "島根", "出雲", "岡山", "倉敷", "広島", "福山", "山口", "下関", "徳島", "香川", "高松",
    "愛媛", "高知", "福岡", "北九州", "久留米", "筑豊", "佐賀", "長崎", "佐世保", "熊本", "大分",
    "宮崎", "鹿児島", "奄美", "沖縄",
)  # fmt: skip

GROUPS = ("eup", "na", "sa", "kr", "cn", "jp")  # sa: Brazil, Mercosur and their neighbours
LONGEST = 14  # characters of the longest text, a Japanese one, and two to spare


def _distinct(*parts: str) -> str:
    return "".join(dict.fromkeys("".join(parts)))


CHARACTERS = _distinct(LATIN, CN_PROVINCES, CN_SPECIAL, KR_PRIVATE, *KR_PLACES, JP_KANA, *JP_PLACES)
GAP = 0  # class between characters and behind them; CHARACTERS[i] is class i + 1
CLASSES = len(CHARACTERS) + 1
_INDEX = {character: i + 1 for i, character in enumerate(CHARACTERS)}


def encode(text: str) -> list[int]:
    """Return LONGEST class numbers, GAP behind the text; ValueError for a text of no plate."""
    if len(text) > LONGEST or any(c not in _INDEX for c in text):
        raise ValueError(f"{text!r} has characters or a length that no plate has")
    return [_INDEX[c] for c in text] + [GAP] * (LONGEST - len(text))


def decode(classes: list[int]) -> str:
    """Return the text of class numbers; gaps are left out."""
    return "".join(CHARACTERS[i - 1] for i in classes if i != GAP)


def folded(text: str) -> str:
    """Return the text with O as 0 and I as 1, which plates draw alike."""
    return text.translate(str.maketrans("OI", "01"))
