#import <stdlib.h>

#import "dialogs/DialogParts.h"

static NSString* const kPreferences = @"Library/Preferences/.GlobalPreferences.plist";

#define DIALOG_TEXTS 9

/// The texts in one language, in the order of kEnglish.
struct Translation {
    NSString* language;
    NSString* texts[DIALOG_TEXTS];
};

static NSString* const kEnglish[DIALOG_TEXTS] = {
    DIALOG_WANTS_CHANGES,  DIALOG_ASKS_ADMINISTRATOR,  DIALOG_NAME,       DIALOG_PASSWORD,
    DIALOG_CANCEL,         DIALOG_WRONG_ADMINISTRATOR, DIALOG_LOCK_IS_ON, DIALOG_ASKS_PASSWORD,
    DIALOG_WRONG_PASSWORD,
};

static const struct Translation kTranslations[] = {
    {@"de",
     {@"%@ möchte Änderungen vornehmen.", @"Erlauben Sie dies mit Namen und Passwort eines Administrators.",
      @"Name:", @"Passwort:", @"Abbrechen", @"Name oder Passwort ist nicht richtig.",
      @"Die Kindersicherung von Sentrel ist eingeschaltet.", @"Geben Sie ihr Passwort ein, um fortzufahren.",
      @"Das Passwort ist nicht richtig."}},
    {@"es",
     {@"%@ quiere hacer cambios.",
      @"Introduzca el nombre y la contraseña de un administrador para permitirlo.",
      @"Nombre:", @"Contraseña:", @"Cancelar", @"El nombre o la contraseña no son correctos.",
      @"El control parental de Sentrel está activado.", @"Introduzca su contraseña para continuar.",
      @"La contraseña no es correcta."}},
    {@"fr",
     {@"%@ souhaite effectuer des modifications.",
      @"Saisissez le nom et le mot de passe d’un administrateur pour l’autoriser.",
      @"Nom :", @"Mot de passe :", @"Annuler", @"Le nom ou le mot de passe est incorrect.",
      @"Le contrôle parental de Sentrel est activé.", @"Saisissez son mot de passe pour continuer.",
      @"Le mot de passe est incorrect."}},
    {@"it",
     {@"%@ vuole effettuare modifiche.", @"Inserisci nome e password di un amministratore per consentirlo.",
      @"Nome:", @"Password:", @"Annulla", @"Il nome o la password non è corretta.",
      @"Il controllo parentale di Sentrel è attivo.", @"Inserisci la sua password per continuare.",
      @"La password non è corretta."}},
    {@"ja",
     {@"“%@”が変更を加えようとしています。", @"許可するには管理者の名前とパスワードを入力してください。",
      @"名前:", @"パスワード:", @"キャンセル", @"名前またはパスワードが正しくありません。",
      @"Sentrelのペアレンタルコントロールが有効です。", @"続けるにはそのパスワードを入力してください。",
      @"パスワードが正しくありません。"}},
    {@"pl",
     {@"%@ chce wprowadzić zmiany.", @"Aby na to zezwolić, podaj nazwę i hasło administratora.",
      @"Nazwa:", @"Hasło:", @"Anuluj", @"Nazwa lub hasło jest nieprawidłowe.",
      @"Kontrola rodzicielska Sentrel jest włączona.", @"Podaj jej hasło, aby kontynuować.",
      @"Hasło jest nieprawidłowe."}},
    {@"ru",
     {@"«%@» хочет внести изменения.", @"Чтобы разрешить это, введите имя и пароль администратора.", @"Имя:",
      @"Пароль:", @"Отменить", @"Имя или пароль указаны неверно.", @"Родительский контроль Sentrel включён.",
      @"Введите его пароль, чтобы продолжить.", @"Пароль указан неверно."}},
    {@"zh-Hans",
     {@"“%@”想要进行更改。", @"请输入管理员的名称和密码以允许此操作。", @"名称：", @"密码：", @"取消",
      @"名称或密码不正确。", @"Sentrel 家长控制已开启。", @"请输入其密码以继续。", @"密码不正确。"}},
};

/// The user's languages, best first.
static NSArray* userLanguages(void) {
    const char* home = getenv("HOME");
    NSString* file = [[NSString stringWithUTF8String:home != NULL ? home : "/"]
        stringByAppendingPathComponent:kPreferences];
    NSData* data = [NSData dataWithContentsOfFile:file];
    id preferences = data == nil ? nil
                                 : [NSPropertyListSerialization propertyListWithData:data
                                                                             options:NSPropertyListImmutable
                                                                              format:NULL
                                                                               error:NULL];
    id languages =
        [preferences isKindOfClass:[NSDictionary class]] ? [preferences objectForKey:@"AppleLanguages"] : nil;
    return [languages isKindOfClass:[NSArray class]] ? languages : [NSArray array];
}

static BOOL isLanguage(NSString* asked, NSString* known) {
    return [asked isEqualToString:known] || [asked hasPrefix:[known stringByAppendingString:@"-"]];
}

/// The texts of the user's first known language; kEnglish if that is English or none is known.
static NSString* const* textsOfUser(void) {
    NSArray* languages = userLanguages();
    for (NSUInteger index = 0; index < [languages count]; ++index) {
        NSString* asked = [[languages objectAtIndex:index] description];
        if (isLanguage(asked, @"en")) {
            break;
        }
        for (size_t known = 0; known < sizeof kTranslations / sizeof kTranslations[0]; ++known) {
            if (isLanguage(asked, kTranslations[known].language)) {
                return kTranslations[known].texts;
            }
        }
    }
    return kEnglish;
}

NSString* dialogText(NSString* english) {
    NSString* const* texts = textsOfUser();
    for (int index = 0; index < DIALOG_TEXTS; ++index) {
        if ([kEnglish[index] isEqualToString:english]) {
            return texts[index];
        }
    }
    return english;
}

void dialogChooseFonts(void) {
    NSArray* installed = [[NSFontManager sharedFontManager] availableFonts];
    NSArray* regular = [NSArray arrayWithObjects:@"Inter-Regular", @"DejaVuSans", nil];
    NSArray* bold = [NSArray arrayWithObjects:@"Inter-SemiBold", @"DejaVuSans-Bold", nil];
    NSUInteger choice = [installed containsObject:[regular objectAtIndex:0]] &&
                                [installed containsObject:[bold objectAtIndex:0]]
                            ? 0
                            : 1;
    [[NSUserDefaults standardUserDefaults]
        registerDefaults:[NSDictionary dictionaryWithObjectsAndKeys:[regular objectAtIndex:choice], @"NSFont",
                                                                    [bold objectAtIndex:choice],
                                                                    @"NSBoldFont", nil]];
    // For letters that those fonts lack.
    [NSFont setPreferredFontNames:[NSArray arrayWithObjects:[regular objectAtIndex:choice], @"DejaVuSans",
                                                            @"DroidSansFallback", nil]];
}
