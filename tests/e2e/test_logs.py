"""A conversation of two clients in the log files. A line is written before its message goes on, so there is nothing to
wait for."""
from sandbox.client import CHAT
from sandbox.desk import until
from sandbox.wire import tlv
from tests.e2e import support
from tests.e2e.support import FeatureTest

PAGE = '<HTML><BODY BGCOLOR="#ffffff"><FONT SIZE=2>hi<BR>there</FONT></BODY></HTML>'
CONVERSATION = [("Ada Sample", PAGE), ("tomsample", "<b>bold</b> &lt; 3"), ("Ada Sample", "na\u00efve \u2713"),
                ("tomsample", "two\r\nlines")]
# The third line in HTML, in the character set of the program's texts. Plain text is UTF-8 because of it.
LETTERS = {"relay": "na\u00efve \u2713".encode(), "exe": b"na\xefve &#10003;"}
MARK = {"relay": b"", "exe": b"\xef\xbb\xbf"}


def logged():
    """By what is spoken: in a text log, in an HTML log."""
    letters = LETTERS[support.target.name]
    return [(b"hi\r\nthere", PAGE.encode()), (b"bold &lt; 3", b"<b>bold</b> &lt; 3"), (LETTERS["relay"], letters),
            (b"two\r\nlines", b"two\r\nlines")]


def text_lines(ada, tom):
    lines = [b"%s (TIME): %s\r\n" % (speaker, text) for speaker, (text, _) in zip((ada, tom, ada, tom), logged())]
    return MARK[support.target.name] + b"".join(lines)


def html_lines(ada, tom):
    lines = []
    for (speaker, colour), (_, html) in zip((ada, tom, ada, tom), logged()):
        lines.append(b"<b><font color=#%s>%s </font><font color=#0000ff size=-1>(TIME):</font> </b>%s<br>\r\n"
                     % (colour, speaker, html))
    return b"".join(lines)


class Logs(FeatureTest):
    """Both clients are behind the program, so that each message is logged twice: for its speaker, and for its listener
    under the speaker's name without blanks."""

    async def asyncSetUp(self):
        await super().asyncSetUp()
        self.ada, self.tom = self.client("Ada Sample"), self.client("tomsample")

    async def converse(self, conversation=tuple(CONVERSATION)):
        for speaker, text in conversation:
            source, sink = (self.ada, self.tom) if speaker == self.ada.name else (self.tom, self.ada)
            await source.say(sink.name, text)
            self.assertEqual(await sink.hear(), (speaker, text))

    async def sign_on(self):
        await self.ada.sign_on()
        await self.tom.sign_on()

    async def test_text_logs_are_stripped_and_lie_in_one_folder(self):
        await self.sign_on()
        folder = self.log_to()
        await self.converse()
        self.assertEqual(self.logs(folder), {"tomsample DATE.txt": text_lines(b"Ada Sample", b"tomsample"),
                                             "AdaSample DATE.txt": text_lines(b"AdaSample", b"tomsample")})

    async def test_html_logs_keep_the_message_in_a_folder_for_each_buddy(self):
        await self.sign_on()
        folder = self.log_to(loghowhtm="True", logfolder="1")
        await self.converse()
        sent, received = b"ff0000", b"0000ff"
        self.assertEqual(self.logs(folder), {
            "tomsample/tomsample DATE.htm": html_lines((b"Ada Sample", sent), (b"tomsample", received)),
            "AdaSample/AdaSample DATE.htm": html_lines((b"AdaSample", received), (b"tomsample", sent))})

    async def test_a_conversation_under_an_alias_is_one_file(self):
        await self.tom.sign_on()
        self.aliases(b"tomsample\r\nFred\r\n")
        await self.ada.sign_on()
        folder = self.log_to()
        await self.ada.say("Fred", "to Fred")
        await self.tom.say("Ada Sample", "from Fred")
        await self.ada.hear()
        await self.ada.say("Tom Sample", "to his own name")
        logs = self.logs(folder)
        self.assertEqual(logs["Fred DATE.txt"], b"Ada Sample (TIME): to Fred\r\nFred (TIME): from Fred\r\n"
                                                b"Ada Sample (TIME): to his own name\r\n")
        self.assertFalse([name for name in logs if name.lower().startswith("tom")])

    async def test_a_chat_room_is_a_file_of_its_name(self):
        await self.sign_on()
        folder = self.log_to()
        self.settings(logchat="1")
        ada, tom = await self.ada.enter_room(), await self.tom.enter_room()
        for line in (ada, tom):
            await line.take(CHAT, 2)  # which tells the room's name
        comes_back = tlv(6)
        for speaker, other, asks, text in ((ada, tom, comes_back, b"<b>hello</b>"), (tom, ada, comes_back, b"hi"),
                                           (ada, tom, b"", b"bye"), (tom, ada, b"", b"wait")):
            await speaker.send_snac(CHAT, 5, bytes(8) + b"\0\3" + tlv(1) + asks + tlv(5, tlv(1, text)))
            for line in (ada, tom) if asks else (other,):
                await line.take(CHAT, 6)
        await ada.close()
        await until(lambda: len(self.service.room) == 1, "Ada to have left")
        await tom.send_snac(CHAT, 5, bytes(8) + b"\0\3" + tlv(1) + tlv(5, tlv(1, b"alone")))
        said = [b"Ada Sample (TIME): hello\r\n", b"tomsample (TIME): hi\r\n", b"Ada Sample (TIME): bye\r\n",
                b"tomsample (TIME): wait\r\n", b"tomsample (TIME): alone\r\n"]
        await until(lambda: self.logs(folder) == {"Poets DATE.txt": b"".join(said)}, "each line once, under its speaker")
