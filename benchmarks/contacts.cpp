#include "contacts.h"

#include "pdtm.h"

#include <random>

namespace {

struct Name
{
    const char *written, *reading;
};
constexpr Name LastNames[] = {
    {"佐藤", "サトウ"},   {"鈴木", "スズキ"},   {"高橋", "タカハシ"}, {"田中", "タナカ"},
    {"伊藤", "イトウ"},   {"渡辺", "ワタナベ"}, {"山本", "ヤマモト"}, {"中村", "ナカムラ"},
    {"小林", "コバヤシ"}, {"加藤", "カトウ"},   {"吉田", "ヨシダ"},   {"山田", "ヤマダ"},
    {"佐々木", "ササキ"}, {"山口", "ヤマグチ"}, {"松本", "マツモト"}, {"井上", "イノウエ"},
    {"木村", "キムラ"},   {"清水", "シミズ"},   {"斎藤", "サイトウ"}, {"Miller", "ミラー"}};
constexpr Name FirstNames[] = {{"太郎", "タロウ"},   {"花子", "ハナコ"},   {"健一", "ケンイチ"},
                               {"由美", "ユミ"},     {"翔太", "ショウタ"}, {"美咲", "ミサキ"},
                               {"大輔", "ダイスケ"}, {"さくら", "サクラ"}, {"直樹", "ナオキ"},
                               {"恵", "メグミ"},     {"隆", "タカシ"},     {"Anna", "アンナ"}};
constexpr Name Companies[] = {{"東京測量", "トウキョウソクリョウ"},
                              {"北海水産", "ホッカイスイサン"},
                              {"みどり印刷", "ミドリインサツ"},
                              {"港倉庫", "ミナトソウコ"},
                              {"青葉建築設計", "アオバケンチクセッケイ"}};
constexpr const char *Towns[] = {"千代田区神田", "横浜市中区", "京都市左京区", "札幌市北区", "那覇市泉崎"};

class Inventor
{
public:
    Contact next()
    {
        Contact contact;
        name(contact);
        work(contact);
        reach(contact);
        contact.category = static_cast<uint8_t>(1 + below(8));
        ppsettime(contact.modified.data(), 2000 + below(24), 1 + below(12), 1 + below(28), below(24),
                  below(60), below(60));
        return contact;
    }

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    template <typename Item, size_t N> const Item &oneOf(const Item (&items)[N])
    {
        return items[below(static_cast<int>(N))];
    }
    std::string digits(int count)
    {
        std::string text;
        while (count-- > 0)
            text += static_cast<char>('0' + below(10));
        return text;
    }

    void name(Contact &contact)
    {
        const Name &last = oneOf(LastNames), &first = oneOf(FirstNames);
        const std::string number = digits(3); // so that readings are seldom equal
        auto &texts = contact.texts;
        texts[2] = last.written;
        texts[3] = first.written;
        texts[4] = last.reading;
        texts[5] = first.reading + number;
        texts[NameItem] = texts[2] + " " + texts[3];
        texts[ReadingItem] = texts[4] + " " + texts[5];
    }

    void work(Contact &contact)
    {
        const Name &company = oneOf(Companies);
        auto &texts = contact.texts;
        texts[CompanyItem] = std::string("株式会社") + company.written + digits(2);
        texts[7] = company.reading;
        texts[8] = "第" + digits(1) + "営業部";
        texts[9] = "課長";
    }

    void reach(Contact &contact)
    {
        auto &texts = contact.texts;
        for (const int phone : {10, 11, 12, 13})
            texts[static_cast<size_t>(phone)] = "03-" + digits(4) + "-" + digits(4);
        texts[MailItem] = "user" + digits(6) + "@example.com";
        texts[15] = "home" + digits(6) + "@example.net";
        for (const size_t address : {16u, 20u}) {
            texts[address] = digits(3) + "-" + digits(4);
            texts[address + 1] = "東京都";
            texts[address + 2] = oneOf(Towns);
            texts[address + 3] = digits(1) + "丁目" + digits(2) + "番地 第" + digits(1) + "ビル";
        }
        texts[24] = "http://www.example.com/~" + digits(6);
        texts[MemoItem] = "打ち合わせで会う。資料は" + digits(4) + "番の棚。連絡は午前中に電話で。";
    }

    std::mt19937 m_random{4711};
};

} // namespace

std::vector<Contact> makeContacts(int count)
{
    Inventor inventor;
    std::vector<Contact> contacts;
    contacts.reserve(static_cast<size_t>(count));
    while (count-- > 0)
        contacts.push_back(inventor.next());
    return contacts;
}
